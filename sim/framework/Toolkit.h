// Process set-up shared by the application framework and the UI tests.
#pragma once

#include <string>

namespace tvsim {

// Before elm_init: UTF-8 locale, gettext bound to the application's catalogues in
// the language of the language setting, and the start-up calls that keep EFL
// from looking for a session bus, systemd and its icon cache daemon.
void PrepareToolkitEnvironment();

// After elm_init, before the first widget: adds the platform theme extension with
// the toolkit styles the application asks for by name. False (and one ERR line
// naming the path) when the theme is missing. Adding the same theme twice is a no-op.
bool AddPlatformTheme();

// The compiled platform theme (TVSIM_PLATFORM_THEME overrides the built-in path).
std::string PlatformThemePath();

// The size of the simulated TV screen: TVSIM_SCREEN=WIDTHxHEIGHT (each side from 1
// up to 8K UHD, 7680x4320), else 1920x1080 (with a warning on stderr when set otherwise).
constexpr int kMaxScreenWidth = 7680;
constexpr int kMaxScreenHeight = 4320;
struct ScreenSize {
  int width = 1920;
  int height = 1080;
};
ScreenSize Screen();

}  // namespace tvsim
