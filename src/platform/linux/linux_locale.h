// The user's zone and language from the environment and the system's settings, worded by ICU.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/locale.h"

namespace corvane {

// "de_DE" from LC_ALL, LC_TIME or LANG, the first that is set and not empty; "en_US" for none, "C" and "POSIX".
[[nodiscard]] std::string localeNameFromEnvironment();

// An IANA name from TZ, else from the link /etc/localtime, else from /etc/timezone, else "UTC".
[[nodiscard]] std::string systemZoneName();

class LinuxLocale final : public Locale {
 public:
  // `zoneName` is asked at each call; a zone that the system does not know counts as UTC. A locale that ICU
  // does not know is worded by its nearest relative.
  explicit LinuxLocale(const std::string& localeName = localeNameFromEnvironment(),
                       std::function<std::string()> zoneName = systemZoneName);
  ~LinuxLocale() override;

  [[nodiscard]] Calendar calendar() const override;
  [[nodiscard]] std::string longDate(Date date) const override;
  [[nodiscard]] std::string mediumDateShortTime(Date date) const override;
  [[nodiscard]] std::string shortTime(Date date) const override;
  [[nodiscard]] std::string number(std::int64_t value) const override;
  [[nodiscard]] std::string duration(std::int64_t count, DurationUnit unit) const override;
  [[nodiscard]] std::string sortKey(std::string_view name) const override;

 private:
  struct Wording;
  std::function<std::string()> zoneName_;
  std::unique_ptr<Wording> wording_;
};

}  // namespace corvane
