// The form of messages in log files, and log files read back for viewers. Touches no file.
#pragma once

#include <string>
#include <string_view>

#include "core/logging/log_records.h"

namespace corvane {

struct LogRecordCodec {
  // A message as it stands in its line: control bytes as \n, \r, \t or \x1b, a backslash as \\, so that what a
  // vendor's page or a file name says can neither begin a line of its own nor steer the terminal it is read in.
  [[nodiscard]] static std::string escaped(std::string_view message);

  // One record a line of the log's form, its message as it was before it was escaped. Any other line belongs to the
  // record before it, with its line break; what stands before the first record is left out. The records keep the
  // text, in which messages that were escaped are put right in place.
  [[nodiscard]] static LogRecords parse(std::string contents);
};

}  // namespace corvane
