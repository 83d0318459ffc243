// Draws the dashboard of CORVANE_ROOT and HOME into a picture, by the window that the application shows. It
// starts nothing and claims nothing: what it draws is the state as it lies on disk.
#include <dlfcn.h>
#include <fmt/format.h>

#include <cstdio>
#include <filesystem>

#include "app/windows_module.h"
#include "platform/posix/standard_descriptors.h"
#include "presentation/deferral_prompt_controller.h"
#include "presentation/install_confirmation_controller.h"
#include "programs/user/user_machine.h"

namespace {

using namespace corvane;

int draw(const std::filesystem::path& bundle, const std::string& file) {
  const auto places = placesFromEnvironment();
  if (!places) {
    fmt::print(stderr, "corvane_draw: {}\n", places.error().text);
    return 1;
  }
  void* module = dlopen((bundle / "Contents/PlugIns" / kWindowsModuleFile).c_str(), RTLD_NOW | RTLD_LOCAL);
  auto* drawDashboard =
      module == nullptr
          ? nullptr
          : reinterpret_cast<int (*)(WindowsHost&, const std::string&)>(dlsym(module, kDrawDashboardSymbol));
  if (drawDashboard == nullptr) {
    fmt::print(stderr, "corvane_draw: the windows module cannot be opened: {}\n", dlerror());
    return 1;
  }
  UserMachine machine(*places, bundle / "Contents/MacOS/Corvane");
  AskedFor focus;
  Services services(machine.ports(focus));
  StatusViewModel model(services.workflow());
  model.refreshHelperState(false);
  model.refreshDeadlineDisplay();  // as the application's first load does, or a complete cycle shows as an idle one
  const auto workflow = services.workflow();
  DeferralPromptController prompt(model, workflow);
  InstallConfirmationController confirmation(model, workflow);
  WindowsHost host{.model = model,
                   .services = workflow,
                   .loop = machine.loop,
                   .prompt = prompt,
                   .promptWindows = services.promptWindows,
                   .confirmation = confirmation};
  if (drawDashboard(host, file) == 0) return 0;
  fmt::print(stderr, "corvane_draw: {} cannot be written\n", file);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  fillStandardDescriptors();
  if (argc != 3) {
    fmt::print(stderr, "usage: corvane_draw BUNDLE FILE.png\n");
    return 2;
  }
  std::error_code error;
  const auto bundle = std::filesystem::canonical(argv[1], error);
  if (!error) return draw(bundle, argv[2]);
  fmt::print(stderr, "corvane_draw: {}: {}\n", argv[1], error.message());
  return 1;
}
