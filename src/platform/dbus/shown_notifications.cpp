#include "platform/dbus/shown_notifications.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "base/atomic_file.h"
#include "base/json.h"

namespace corvane {

namespace {

constexpr std::int64_t kVersion = 1;
constexpr std::size_t kFileLimit = 1U << 20U;  // a few thousand notifications
constexpr mode_t kOwnerOnly = 0600;            // what they carry is nobody else's

std::optional<ShownNotifications::One> oneOf(const JsonValue& value) {
  const auto* number = value.find("number");
  const auto* userInfo = value.find("userInfo");
  const auto read = number == nullptr ? std::nullopt : number->integer();
  if (!read || *read < 1 || *read > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
  ShownNotifications::One one{.number = static_cast<std::uint32_t>(*read)};
  if (userInfo == nullptr || userInfo->object() == nullptr) return one;
  for (const auto& [key, text] : userInfo->object()->entries())
    if (const auto given = text.string()) one.userInfo.emplace(key, *given);
  return one;
}

}  // namespace

ShownNotifications::ShownNotifications(std::filesystem::path file) : file_(std::move(file)) { read(); }

void ShownNotifications::read() {
  const auto bytes = readFile(file_, kFileLimit);
  if (!bytes) return;
  const auto document = parseJson(*bytes);
  if (!document) return;
  const auto* version = document->find("version");
  const auto* service = document->find("service");
  const auto* shown = document->find("shown");
  if (version == nullptr || version->integer() != kVersion || service == nullptr || !service->string() ||
      shown == nullptr || shown->object() == nullptr)
    return;
  service_ = *service->string();
  for (const auto& [identifier, value] : shown->object()->entries())
    if (auto one = oneOf(value)) shown_.emplace(identifier, std::move(*one));
}

void ShownNotifications::write() const {
  std::vector<JsonObject::Entry> shown;
  for (const auto& [identifier, one] : shown_) {
    std::vector<JsonObject::Entry> userInfo(one.userInfo.begin(), one.userInfo.end());
    shown.emplace_back(identifier, JsonObject{{"number", static_cast<std::int64_t>(one.number)},
                                              {"userInfo", JsonObject::fromEntries(std::move(userInfo))}});
  }
  const JsonObject document{
      {"version", kVersion}, {"service", service_}, {"shown", JsonObject::fromEntries(std::move(shown))}};
  [[maybe_unused]] const auto written = writeFileAtomically(file_, writeJson(document), kOwnerOnly);
}

void ShownNotifications::belongTo(const std::string& service) {
  if (areOf(service)) return;
  service_ = service;
  forgetAll();
}

std::uint32_t ShownNotifications::numberOf(const std::string& identifier) const {
  const auto found = shown_.find(identifier);
  return found == shown_.end() ? 0 : found->second.number;
}

std::optional<std::string> ShownNotifications::identifierOf(std::uint32_t number) const {
  const auto found = std::ranges::find_if(shown_, [&](const auto& entry) { return entry.second.number == number; });
  return found == shown_.end() ? std::nullopt : std::optional(found->first);
}

void ShownNotifications::put(const std::string& identifier, One one) {
  shown_.insert_or_assign(identifier, std::move(one));
  write();
}

void ShownNotifications::forget(const std::string& identifier) {
  if (shown_.erase(identifier) > 0) write();
}

void ShownNotifications::forgetAll() {
  if (shown_.empty()) return;
  shown_.clear();
  write();
}

}  // namespace corvane
