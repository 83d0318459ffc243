// Input, output and error output of a program whose starter may have closed them.
#pragma once

namespace corvane {

// Opens /dev/null in the place of each of the three that is closed. Call it first in main: otherwise the next file
// or pipe that is opened gets the free number, and is written to as standard output or refused by the event loop.
void fillStandardDescriptors();

}  // namespace corvane
