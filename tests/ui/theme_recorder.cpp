#include "tests/ui/theme_recorder.h"

namespace {

ThemeNotes& TheNotes() {
  static ThemeNotes notes;
  return notes;
}

HTHEME WINAPI OpenNonClientTheme(HWND, LPCWSTR) { return nullptr; }
void WINAPI RefreshColorPolicy() { ++TheNotes().colorRefreshes; }
BOOL WINAPI RefreshHighContrast(int one) {
  TheNotes().contrastRefreshes += one;
  return TRUE;
}
bool WINAPI SystemAsksForDark() { return TheNotes().asksForDark; }
bool WINAPI AllowForWindow(HWND, bool allow) {
  TheNotes().allowed.push_back(allow);
  return true;
}
int WINAPI SetApplicationMode(int one) { return TheNotes().applicationModes += one; }
bool WINAPI AllowForApplication(bool allow) { return (TheNotes().applicationAllowances += allow ? 1 : 0) != 0; }
bool WINAPI IsAllowedForWindow(HWND) { return true; }
BOOL WINAPI SetComposition(HWND, CompositionAttribute*) { return TRUE; }
HRESULT WINAPI SetTheme(HWND window, LPCWSTR name, LPCWSTR) {
  TheNotes().themed.push_back({window, name != nullptr ? name : L"(null)"});
  return S_OK;
}
HRESULT WINAPI DrawBackground(HTHEME, HDC, int, int state, LPCRECT, LPCRECT) {
  TheNotes().backgrounds.push_back({state, L""});
  return S_OK;
}
HRESULT WINAPI DrawLabel(HTHEME, HDC, int, int state, LPCWSTR text, int length, DWORD, DWORD, LPCRECT) {
  TheNotes().texts.push_back({state, std::wstring(text, static_cast<std::size_t>(length))});
  return S_OK;
}
BOOL WINAPI SystemParameters(UINT action, UINT size, PVOID data, UINT) {
  if (action != SPI_GETHIGHCONTRAST || size != 16) return FALSE;
  static_cast<HIGHCONTRASTW*>(data)->dwFlags = HCF_AVAILABLE | (TheNotes().highContrast ? HCF_HIGHCONTRASTON : 0);
  return TRUE;
}

}  // namespace

std::wstring ThemeNotes::ThemeOf(HWND window) const {
  for (auto note = themed.rbegin(); note != themed.rend(); ++note) {
    if (note->window == window) return note->name;
  }
  return L"-";
}

ThemeEntryPoints RecordingEntryPoints() {
  ThemeEntryPoints entries;
  entries.openNonClientTheme = &OpenNonClientTheme;
  entries.refreshColorPolicy = &RefreshColorPolicy;
  entries.refreshHighContrast = &RefreshHighContrast;
  entries.systemAsksForDark = &SystemAsksForDark;
  entries.allowForWindow = &AllowForWindow;
  entries.setApplicationMode = &SetApplicationMode;
  entries.allowForApplication = &AllowForApplication;
  entries.isAllowedForWindow = &IsAllowedForWindow;
  entries.setComposition = &SetComposition;
  entries.setWindowTheme = &SetTheme;
  entries.drawBackground = &DrawBackground;
  entries.drawText = &DrawLabel;
  entries.systemParameters = &SystemParameters;
  return entries;
}

ThemeRecorder::ThemeRecorder(unsigned build, bool asksForDark, bool highContrast) {
  TheNotes() = {};
  TheNotes().asksForDark = asksForDark;
  TheNotes().highContrast = highContrast;
  SetThemeEntryPointsForTest(RecordingEntryPoints(), build);
}

ThemeRecorder::~ThemeRecorder() { SetThemeEntryPointsForTest({}, 0); }

ThemeNotes& ThemeRecorder::Notes() const { return TheNotes(); }
