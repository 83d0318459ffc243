// Draws the dashboard or the prompt of CORVANE_ROOT and HOME into a picture, by the window that the application shows.
// It starts nothing and claims nothing: what it draws is the state as it lies on disk.
#include <dlfcn.h>
#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "app/windows_module.h"
#include "core/preferences/display_title.h"
#include "platform/posix/standard_descriptors.h"
#include "presentation/deferral_prompt_controller.h"
#include "presentation/install_confirmation_controller.h"
#include "programs/corvane_draw/prompt_on_disk.h"
#include "programs/user/user_machine.h"
#include "programs/user/user_places.h"

namespace {

using namespace corvane;

template <class Function>
Function windowsFunction(const std::filesystem::path& bundle, const char* symbol) {
  void* module = dlopen((bundle / "Contents/PlugIns" / kWindowsModuleFile).c_str(), RTLD_NOW | RTLD_LOCAL);
  auto* function = module == nullptr ? nullptr : reinterpret_cast<Function>(dlsym(module, symbol));
  if (function == nullptr) fmt::print(stderr, "corvane_draw: the windows module cannot be opened: {}\n", dlerror());
  return function;
}

int drawnInto(const std::string& file, int outcome) {
  if (outcome != 0) fmt::print(stderr, "corvane_draw: {} cannot be written\n", file);
  return outcome;
}

int drawDashboard(const std::filesystem::path& bundle, const std::string& file, UserMachine& machine,
                  Services& services) {
  const auto draw = windowsFunction<DrawDashboard>(bundle, kDrawDashboardSymbol);
  if (draw == nullptr) return 1;
  const auto workflow = services.workflow();
  StatusViewModel model(workflow);
  model.refreshHelperState(false);
  model.refreshDeadlineDisplay();  // as the application's first load does, or a complete cycle shows as an idle one
  DeferralPromptController prompt(model, workflow);
  InstallConfirmationController confirmation(model, workflow);
  WindowsHost host{.model = model,
                   .services = workflow,
                   .loop = machine.loop,
                   .prompt = prompt,
                   .promptWindows = services.promptWindows,
                   .confirmation = confirmation};
  return drawnInto(file, draw(host, file));
}

int drawPrompt(const std::filesystem::path& bundle, const std::string& file, Services& services, bool confirming) {
  const auto draw = windowsFunction<DrawPrompt>(bundle, kDrawPromptSymbol);
  if (draw == nullptr) return 1;
  const auto workflow = services.workflow();
  const StatusViewModel model(workflow);
  const auto page = promptOnDisk(model, workflow, confirming);
  if (page.rows.empty()) {
    fmt::print(stderr, "corvane_draw: nothing is pending, so there is no prompt\n");
    return 1;
  }
  return drawnInto(file, draw(page, AppDisplayTitle(services.preferences.loadConfiguration()).current(), file));
}

int draw(const std::filesystem::path& bundle, const std::string& file, std::string_view window) {
  const auto places = placesFromEnvironment();
  if (!places) {
    fmt::print(stderr, "corvane_draw: {}\n", places.error().text);
    return 1;
  }
  UserMachine machine(*places, bundle / "Contents/MacOS/Corvane");
  AskedFor focus;
  Services services(machine.ports(focus));
  if (window == "dashboard") return drawDashboard(bundle, file, machine, services);
  return drawPrompt(bundle, file, services, window == "confirmation");
}

}  // namespace

int main(int argc, char** argv) {
  fillStandardDescriptors();
  const std::string_view window = argc == 4 ? argv[3] : "dashboard";
  if (argc < 3 || argc > 4 || (window != "dashboard" && window != "prompt" && window != "confirmation")) {
    fmt::print(stderr, "usage: corvane_draw BUNDLE FILE.png [dashboard | prompt | confirmation]\n");
    return 2;
  }
  std::error_code error;
  const auto bundle = std::filesystem::canonical(argv[1], error);
  if (!error) return draw(bundle, argv[2], window);
  fmt::print(stderr, "corvane_draw: {}: {}\n", argv[1], error.message());
  return 1;
}
