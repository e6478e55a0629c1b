// The display language: the setting "db/menu/system/language" ("en_US", "ar_AE", ...)
// decides gettext's language and the direction of the on-screen layout.
#pragma once

#include <string>

namespace tvsim {

extern const char kLanguageKey[];  // "db/menu/system/language"

// The language setting; "" when it is unset or unreadable (the TV then speaks en_US).
std::string LanguageSetting();

// Makes gettext answer in `language` from the next call on (LANGUAGE, plus a
// flush of libintl's translation cache). An empty language means "en_US".
void ApplyLanguage(const std::string& language);

// The language last given to ApplyLanguage ("" before the first call).
const std::string& AppliedLanguage();

// True for the languages written right to left: Arabic, Hebrew, Persian, Urdu.
bool IsRightToLeft(const std::string& language);

}  // namespace tvsim
