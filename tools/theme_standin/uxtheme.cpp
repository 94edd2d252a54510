// The stand-in's own routines: the dark entry points, which uxtheme.def exports by ordinal only, as the system does. The dark
// state comes from the environment: VANTORA_STANDIN_DARK=1 makes the system ask applications for dark.

#include <windows.h>

#include <uxtheme.h>

namespace {

template <class Function>
Function SystemEntry(LPCSTR name) {
  static const HMODULE theme = ::LoadLibraryW(L"uxtheme_system.dll");
  return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(theme, name)));
}

}  // namespace

// Nobody calls these by name: the export list alone knows them.
#pragma GCC diagnostic ignored "-Wmissing-declarations"

extern "C" {

HTHEME WINAPI StandInOpenNonClientTheme(HWND window, LPCWSTR classList) {
  return SystemEntry<decltype(&::OpenThemeData)>("OpenThemeData")(window, classList);
}

void WINAPI StandInRefreshColorPolicy() {}
BOOL WINAPI StandInRefreshHighContrast(int) { return TRUE; }

BOOL WINAPI StandInSystemAsksForDark() {
  wchar_t value[8] = L"";
  return ::GetEnvironmentVariableW(L"VANTORA_STANDIN_DARK", value, 8) != 0 && value[0] == L'1';
}

BOOL WINAPI StandInAllowForWindow(HWND, BOOL) { return TRUE; }
int WINAPI StandInSetApplicationMode(int mode) { return mode; }
BOOL WINAPI StandInIsAllowedForWindow(HWND) { return TRUE; }

HRESULT WINAPI StandInSetWindowTheme(HWND window, LPCWSTR name, LPCWSTR idList) {
  const auto set = SystemEntry<decltype(&::SetWindowTheme)>("SetWindowTheme");
  // The system takes two empty texts as "no theme for this window"; the library behind us refuses them, but not a name that
  // exists in no theme.
  const bool none = name != nullptr && *name == L'\0' && idList != nullptr && *idList == L'\0';
  return none ? set(window, L" ", L" ") : set(window, name, idList);
}
}
