#include "platform/scripted/scripted_preference_domains.h"

#include <utility>

namespace corvane {

void ScriptedPreferenceDomains::setUser(PlistDict values) {
  adopt(user_, std::move(values));
  tellWatchers();
}

void ScriptedPreferenceDomains::setManaged(PlistDict values) {
  adopt(managed_, std::move(values));
  tellWatchers();
}

void ScriptedPreferenceDomains::failChanges(std::optional<Error> error) {
  const std::lock_guard lock(mutex_);
  failure_ = std::move(error);
}

DomainSnapshot ScriptedPreferenceDomains::user() const {
  const std::lock_guard lock(mutex_);
  return user_;
}

DomainSnapshot ScriptedPreferenceDomains::managed() const {
  const std::lock_guard lock(mutex_);
  return managed_;
}

PreferenceDomains::Versions ScriptedPreferenceDomains::versions() const {
  const std::lock_guard lock(mutex_);
  return {.user = user_.version, .managed = managed_.version};
}

Status ScriptedPreferenceDomains::changeUser(const std::function<void(PlistDict&)>& change) {
  const std::lock_guard changing(changing_);
  PlistDict values;
  {
    const std::lock_guard lock(mutex_);
    if (failure_) return std::unexpected(*failure_);
    values = *user_.values;
  }
  change(values);
  adopt(user_, std::move(values));
  return {};
}

void ScriptedPreferenceDomains::adopt(DomainSnapshot& snapshot, PlistDict values) {
  const std::lock_guard lock(mutex_);
  if (*snapshot.values == values) return;
  snapshot = {std::make_shared<const PlistDict>(std::move(values)), nextVersion_++};
}

Lease ScriptedPreferenceDomains::watch(std::function<void()> changed) {
  auto watcher = std::make_shared<Watcher>(Watcher{.changed = std::move(changed)});
  watchers_.push_back(watcher);
  return Lease([watcher] { watcher->live = false; });
}

void ScriptedPreferenceDomains::tellWatchers() {
  std::erase_if(watchers_, [](const auto& watcher) { return !watcher->live; });
  for (const auto& watcher : watchers_) {
    if (std::exchange(watcher->told, true)) continue;
    main_.post([watcher] {
      watcher->told = false;
      if (watcher->live) watcher->changed();
    });
  }
}

}  // namespace corvane
