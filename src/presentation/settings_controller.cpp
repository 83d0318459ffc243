#include "presentation/settings_controller.h"

namespace corvane {

struct SettingsController::Models {
  StatusViewModel& model;
  WorkflowServices services;
  SettingsParts parts;
};

SettingsController::SettingsController(StatusViewModel& model, const WorkflowServices& services, SettingsParts parts)
    : models_(std::make_unique<Models>(Models{model, services, std::move(parts)})) {}
SettingsController::~SettingsController() = default;

void SettingsController::selectTab(const std::string& /*key*/) {}
void SettingsController::set(const std::string& /*key*/, const std::string& /*value*/) {}
void SettingsController::step(const std::string& /*key*/, std::int64_t /*steps*/) {}
void SettingsController::switchOn(const std::string& /*key*/, bool /*on*/) {}
void SettingsController::reveal(const std::string& /*key*/, bool /*revealed*/) {}
void SettingsController::press(const std::string& /*key*/) {}
void SettingsController::answer(bool /*yes*/) {}
void SettingsController::save() {}

}  // namespace corvane
