// What is made from the commands and their help beside the help itself. Pure.
#pragma once

#include <string>

namespace corvane::ctl {

// packaging/man/corvanectl.1
[[nodiscard]] std::string manualPage();
// packaging/completion/corvanectl.bash and packaging/completion/_corvanectl
[[nodiscard]] std::string bashCompletion();
[[nodiscard]] std::string zshCompletion();

}  // namespace corvane::ctl
