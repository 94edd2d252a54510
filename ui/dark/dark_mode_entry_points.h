#pragma once

// Every call into the theme library that dark mode makes, in one table that is filled once at start-up: the library's
// undocumented ordinals, found at run time, and the few documented calls beside them whose effect a test has to see or set.
// Nothing but dark mode's own files and their tests needs this.

#include <windows.h>

#include <uxtheme.h>

/// The argument of the window composition call.
struct CompositionAttribute {
  DWORD attribute;
  void* data;
  SIZE_T size;
};

struct ThemeEntryPoints {
  HTHEME(WINAPI* openNonClientTheme)(HWND window, LPCWSTR classList) = nullptr;     ///< ordinal 49
  void(WINAPI* refreshColorPolicy)() = nullptr;                                     ///< ordinal 104
  BOOL(WINAPI* refreshHighContrast)(int one) = nullptr;                             ///< ordinal 106; may be missing
  bool(WINAPI* systemAsksForDark)() = nullptr;                                      ///< ordinal 132
  bool(WINAPI* allowForWindow)(HWND window, bool allow) = nullptr;                  ///< ordinal 133
  int(WINAPI* setApplicationMode)(int one) = nullptr;                               ///< ordinal 135, from build 18362
  bool(WINAPI* allowForApplication)(bool allow) = nullptr;                          ///< ordinal 135, before build 18362
  bool(WINAPI* isAllowedForWindow)(HWND window) = nullptr;                          ///< ordinal 137
  BOOL(WINAPI* setComposition)(HWND window, CompositionAttribute* what) = nullptr;  ///< user32's; may be missing

  decltype(&::SetWindowTheme) setWindowTheme = &::SetWindowTheme;
  decltype(&::DrawThemeBackground) drawBackground = &::DrawThemeBackground;
  decltype(&::DrawThemeText) drawText = &::DrawThemeText;
  decltype(&::SystemParametersInfoW) systemParameters = &::SystemParametersInfoW;
};

/// The build from which ordinal 135 has its newer form and title bars are set by the composition call.
inline constexpr unsigned kComposedTitleBarBuild = 18362;

/// Reads the ordinals from the system's theme library, which stays loaded. Entries that do not exist stay null.
[[nodiscard]] ThemeEntryPoints LoadThemeEntryPoints(unsigned build);

/// Makes dark mode available over this table and asks the system whether it is on; false, with everything off, when a required
/// entry is missing for the build.
bool StartDarkMode(const ThemeEntryPoints& entryPoints, unsigned build);

/// The table in use.
[[nodiscard]] const ThemeEntryPoints& Theme();

/// Puts the test's own table in place of the system's, as if InitDarkMode had found it on a system of this build; a table without
/// the required entries, or build 0, switches dark mode off.
void SetThemeEntryPointsForTest(const ThemeEntryPoints& entryPoints, unsigned build);
