#include "programs/user/helper_keeper.h"

namespace corvane {

HelperKeeper helperKeeper(const std::filesystem::path& root, const std::function<Heard<UnitFile>()>& ask) {
  if (root != "/") return HelperKeeper::ownChild;
  const auto unit = ask();
  const bool installed = unit ? *unit != UnitFile::absent : unit.error() == Silence::unreadable;
  return installed ? HelperKeeper::serviceManager : HelperKeeper::ownChild;
}

}  // namespace corvane
