#include "platform/dbus/launcher_entry.h"

#include <charconv>
#include <map>
#include <string_view>

#include "platform/dbus/bus_call.h"
#include "platform/dbus/notification_words.h"

namespace corvane {

namespace {

constexpr const char* kInterface = "com.canonical.Unity.LauncherEntry";
constexpr const char* kPath = "/org/corvane/Corvane/LauncherEntry";

std::optional<std::int64_t> wholeNumber(std::string_view label) {
  std::int64_t number = 0;
  const auto read = std::from_chars(label.data(), label.data() + label.size(), number);
  if (read.ec != std::errc() || read.ptr != label.data() + label.size()) return std::nullopt;
  return number;
}

}  // namespace

LauncherEntry::LauncherEntry(BusLink& session)
    : session_(session), connection_(session.watch([this](bool connected) {
        if (connected && count_) tell();
      })) {}

LauncherEntry::~LauncherEntry() { show(std::nullopt); }

void LauncherEntry::show(const std::optional<std::string>& label) {
  const auto count = label ? wholeNumber(*label) : std::nullopt;
  if (count == count_) return;
  count_ = count;
  tell();
}

void LauncherEntry::tell() {
  const std::map<std::string, sdbus::Variant> properties{{"count", sdbus::Variant(count_.value_or(0))},
                                                         {"count-visible", sdbus::Variant(count_.has_value())}};
  session_.emit({.object = {.path = kPath, .interface = kInterface}, .method = "Update"}, [&](sdbus::Message& message) {
    message << std::string("application://") + kDesktopEntry + ".desktop" << properties;
  });
}

}  // namespace corvane
