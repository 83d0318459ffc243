// The texts of the sample's installer tool. In them VENDORS_ADDRESS stands for the address of the
// vendors' server and SAMPLE_ROOT for the quoted path of the sample.
#pragma once

#include <string_view>

namespace corvane::sample {

[[nodiscard]] std::string_view installerTool();       // Installomator.sh: arguments and the order of a run
[[nodiscard]] std::string_view installerInstall();    // fragments/install.sh: versions, download, replacing
[[nodiscard]] std::string_view installerBlocking();   // fragments/blocking.sh: open applications
[[nodiscard]] std::string_view installerFunctions();  // fragments/functions.sh: what label fragments call

}  // namespace corvane::sample
