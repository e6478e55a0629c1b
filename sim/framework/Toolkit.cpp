#include "Toolkit.h"

#include <Elementary.h>
#include <Efreet.h>

#include <cctype>
#include <charconv>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <libintl.h>
#include <sys/stat.h>

#include "Language.h"

namespace tvsim {
namespace {

bool FileExists(const std::string& path) {
  struct stat st;
  return !path.empty() && stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool IsPlainC(const char* locale) {
  return locale == nullptr || std::strcmp(locale, "C") == 0 || std::strcmp(locale, "POSIX") == 0;
}

}  // namespace

void PrepareToolkitEnvironment() {
  // gettext ignores LANGUAGE in the "C" locale, so make sure we are in a UTF-8 one.
  const char* lang = std::getenv("LANG");
  if (lang == nullptr || *lang == '\0' || IsPlainC(lang)) setenv("LANG", "C.UTF-8", 1);
  if (IsPlainC(std::setlocale(LC_ALL, ""))) std::setlocale(LC_ALL, "C.UTF-8");

  bindtextdomain(TV_TEXT_DOMAIN, TV_RES_DIR "/locale");
  bind_textdomain_codeset(TV_TEXT_DOMAIN, "UTF-8");
  textdomain(TV_TEXT_DOMAIN);
  ApplyLanguage(LanguageSetting());

  // No session bus, systemd or efreetd on the simulated TV: skip their modules
  // (about 46 ERR lines at each start) and the icon cache helper process.
  ecore_app_no_system_modules();
  efreet_cache_disable();
}

std::string PlatformThemePath() {
  const char* fromEnv = std::getenv("TVSIM_PLATFORM_THEME");
  if (fromEnv != nullptr && *fromEnv != '\0') return fromEnv;
  if (FileExists(TV_PLATFORM_THEME)) return TV_PLATFORM_THEME;
  return TV_INSTALLED_PLATFORM_THEME;
}

bool AddPlatformTheme() {
  const std::string path = PlatformThemePath();
  if (!FileExists(path)) {
    EINA_LOG_ERR("platform theme not found: %s", path.c_str());
    return false;
  }
  const Eina_List* node;
  void* added;
  EINA_LIST_FOREACH(elm_theme_extension_list_get(nullptr), node, added) {
    if (path == static_cast<const char*>(added)) return true;
  }
  elm_theme_extension_add(nullptr, path.c_str());
  return true;
}

ScreenSize Screen() {
  ScreenSize size;
  const char* text = std::getenv("TVSIM_SCREEN");
  if (text == nullptr || *text == '\0') return size;
  // Decimal digits on both sides of the x, nothing else; no screen beyond 8K UHD,
  // which is also what the software renderer takes (100000x100000 crashed it).
  const std::string value = text;
  const size_t x = value.find('x');
  int width = 0, height = 0;
  auto number = [](const std::string& digits, int max, int* out) {
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, *out);
    return !digits.empty() && std::isdigit(static_cast<unsigned char>(digits[0])) && error == std::errc() &&
           stop == end && *out >= 1 && *out <= max;
  };
  if (x != std::string::npos && number(value.substr(0, x), kMaxScreenWidth, &width) &&
      number(value.substr(x + 1), kMaxScreenHeight, &height)) {
    size.width = width;
    size.height = height;
  } else {
    std::fprintf(stderr, "tvsim: TVSIM_SCREEN=%s is not WIDTHxHEIGHT within %dx%d; using %dx%d\n", text,
                 kMaxScreenWidth, kMaxScreenHeight, size.width, size.height);
  }
  return size;
}

}  // namespace tvsim
