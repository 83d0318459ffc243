#include "platform/scripted/scripted_helper_registration.h"

namespace corvane {

ScriptedHelperRegistration::~ScriptedHelperRegistration() {
  for (auto& ending : endings_) ending.done.abandon();
}

Status ScriptedHelperRegistration::registerDaemon() {
  ++registered;
  if (registerFailure) return std::unexpected(*registerFailure);
  current = afterRegister;
  if (onRegister) onRegister();
  return {};
}

void ScriptedHelperRegistration::unregisterDaemon(Completion<Status> done) {
  ++unregistered;
  const auto place = endings_.insert(endings_.end(), Ending{.done = std::move(done)});
  place->timer = main_.after(unregisterTakes, [this, place] {
    auto ending = std::move(*place);
    endings_.erase(place);
    if (unregisterFailure) return ending.done(std::unexpected(*unregisterFailure));
    current = HelperStatus::notRegistered;
    ending.done({});
  });
}

std::optional<std::int32_t> ScriptedHelperRegistration::kickstart() {
  ++kickstarts;
  if (onKickstart) onKickstart();
  return kickstartCode;
}

}  // namespace corvane
