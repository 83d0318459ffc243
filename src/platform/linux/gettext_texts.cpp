#include "platform/linux/gettext_texts.h"

#include <libintl.h>

#include <clocale>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/localized.h"

namespace corvane {
namespace {

constexpr const char* kDomain = "corvane";

std::string messageLocale() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (const char* value = std::getenv(name); value != nullptr && *value != '\0') return value;
  return "";
}

// gettext looks nothing up in the locale "C". Where the system has no data of the wanted locale, its own UTF-8 one
// stands in, and the language is asked for by name.
void chooseLocale() {
  const auto wanted = messageLocale();
  if (std::setlocale(LC_MESSAGES, "") != nullptr || wanted.empty()) return;
  if (std::setlocale(LC_MESSAGES, "C.UTF-8") != nullptr) setenv("LANGUAGE", wanted.c_str(), 0);
}

}  // namespace

void speakUsersLanguage(const std::filesystem::path& folder) {
  chooseLocale();
  bindtextdomain(kDomain, folder.c_str());
  bind_textdomain_codeset(kDomain, "UTF-8");
  installTextCatalogue([](std::string_view literal) {
    const std::string key(literal);
    const char* text = dgettext(kDomain, key.c_str());
    return text == key.c_str() ? std::string() : std::string(text);
  });
}

}  // namespace corvane
