// The user's texts as gettext finds them.
#pragma once

#include <filesystem>

namespace corvane {

// From now on `localized` speaks the user's language, by LANGUAGE, LC_ALL, LC_MESSAGES and LANG as gettext reads them,
// where `folder` has "<language>/LC_MESSAGES/corvane.mo"; also where the system lacks that language's own data. Sets
// the process's message locale, so it is called once, at the start of main, before any thread.
void speakUsersLanguage(const std::filesystem::path& folder);

}  // namespace corvane
