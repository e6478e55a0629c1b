#include "Language.h"

#include <sys/stat.h>

#include <clocale>
#include <cstdlib>
#include <string>

#include "Environment.h"
#include "SettingsTable.h"

// libintl's catalogue generation counter: bumping it drops the cached
// translations, which are keyed without LANGUAGE.
extern "C" int _nl_msg_cat_cntr;

namespace tvsim {
namespace {

const char kDefaultLanguage[] = "en_US";
std::string s_applied;

}  // namespace

const char kLanguageKey[] = "db/menu/system/language";

std::string LanguageSetting() {
  // No TV database yet means no language chosen: do not create one just to ask.
  struct stat st;
  if (stat(DatabasePath().c_str(), &st) != 0) return "";
  const std::optional<SettingValue> value = ReadSetting(kLanguageKey);
  if (!value || value->type != SettingValue::Type::String) return "";
  return value->text;
}

void ApplyLanguage(const std::string& language) {
  s_applied = language.empty() ? kDefaultLanguage : language;
  setenv("LANGUAGE", s_applied.c_str(), 1);
  // Re-selecting the current LC_MESSAGES locale makes libintl re-read LANGUAGE.
  const char* current = std::setlocale(LC_MESSAGES, nullptr);
  const std::string messages = current != nullptr ? current : "";
  std::setlocale(LC_MESSAGES, messages.c_str());
  ++_nl_msg_cat_cntr;
}

const std::string& AppliedLanguage() { return s_applied; }

bool IsRightToLeft(const std::string& language) {
  static const char* const kRtl[] = {"ar", "he", "iw", "fa", "ur"};
  const std::string base = language.substr(0, language.find_first_of("_.@-"));
  for (const char* code : kRtl) {
    if (base == code) return true;
  }
  return false;
}

}  // namespace tvsim
