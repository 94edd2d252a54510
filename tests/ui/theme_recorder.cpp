#include "tests/ui/theme_recorder.h"

namespace {

ThemeNotes& TheNotes() {
  static ThemeNotes notes;
  return notes;
}

HTHEME WINAPI OpenNonClientTheme(HWND window, LPCWSTR classList) {
  TheNotes().openedFor = window;
  TheNotes().openedClasses.emplace_back(classList);
  return nullptr;
}
void WINAPI RefreshColorPolicy() { ++TheNotes().colorRefreshes; }
BOOL WINAPI RefreshHighContrast(int one) {
  TheNotes().contrastRefreshes += one;
  return TRUE;
}
bool WINAPI SystemAsksForDark() { return TheNotes().asksForDark; }
bool WINAPI AllowForWindow(HWND window, bool allow) {
  TheNotes().allowed.push_back({window, allow});
  return true;
}
int WINAPI SetApplicationMode(int one) { return TheNotes().applicationModes += one; }
bool WINAPI AllowForApplication(bool allow) { return (TheNotes().applicationAllowances += allow ? 1 : 0) != 0; }
bool WINAPI IsAllowedForWindow(HWND) { return TheNotes().allowedForWindow; }
BOOL WINAPI SetComposition(HWND, CompositionAttribute* what) {
  if (what->attribute == 26 && what->size == 4) TheNotes().composed.push_back(*static_cast<int*>(what->data));
  return TRUE;
}
HRESULT WINAPI SetTheme(HWND window, LPCWSTR name, LPCWSTR idList) {
  TheNotes().themed.push_back({window, name != nullptr ? name : L"(null)", idList != nullptr && *idList == L'\0'});
  return S_OK;
}
HRESULT WINAPI DrawBackground(HTHEME, HDC dc, int part, int state, LPCRECT rect, LPCRECT) {
  TheNotes().backgrounds.push_back({dc, part, state, *rect, L"", 0});
  return S_OK;
}
HRESULT WINAPI DrawLabel(HTHEME, HDC dc, int part, int state, LPCWSTR text, int length, DWORD flags, DWORD, LPCRECT rect) {
  TheNotes().texts.push_back({dc, part, state, *rect, std::wstring(text, static_cast<std::size_t>(length)), flags});
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
