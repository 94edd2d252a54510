#pragma once

// A theme library made up for tests: answers as told and notes every call, so that dark mode can be watched on systems that lack
// the real entry points. One set of notes for the process; make a recorder at the start of each test.

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

#include "ui/dark/dark_mode_entry_points.h"

struct ThemeNotes {
  bool asksForDark = true;
  bool allowedForWindow = true;
  bool highContrast = false;

  struct Drawn {
    HDC dc;
    int part;
    int state;
    RECT rect;
    std::wstring text;
    DWORD flags;
  };
  std::vector<std::pair<HWND, bool>> allowed;
  std::vector<std::pair<HWND, std::wstring>> themed;
  std::vector<Drawn> backgrounds;
  std::vector<Drawn> texts;
  std::vector<int> composed;  ///< values of the dark title-bar attribute
  std::vector<std::wstring> openedClasses;
  HWND openedFor = nullptr;
  int colorRefreshes = 0;
  int contrastRefreshes = 0;
  int applicationModes = 0;
  int applicationAllowances = 0;

  /// The last theme the window got: "Explorer", "" for none, "-" when it never got one, "?" for a name and a list of ids that do
  /// not go together.
  [[nodiscard]] std::wstring ThemeOf(HWND window) const {
    std::wstring last = L"-";
    for (const auto& [themedWindow, name] : themed) last = themedWindow == window ? name : last;
    return last;
  }
};

/// Dark mode over the made-up library for as long as this lives; afterwards it is off, as before start-up.
class ThemeRecorder {
 public:
  explicit ThemeRecorder(unsigned build = 19045, bool asksForDark = true, bool highContrast = false) {
    notes = {};
    notes.asksForDark = asksForDark;
    notes.highContrast = highContrast;
    SetThemeEntryPointsForTest(EntryPoints(), build);
  }
  ~ThemeRecorder() {
    SetThemeEntryPointsForTest({}, 0);
    notes = {};
  }
  ThemeRecorder(const ThemeRecorder&) = delete;
  ThemeNotes* operator->() const { return &notes; }

  /// The full table, for tests that take entries away.
  [[nodiscard]] static ThemeEntryPoints EntryPoints();

  inline static ThemeNotes notes;
};

inline ThemeEntryPoints ThemeRecorder::EntryPoints() {
  ThemeEntryPoints e;
  e.openNonClientTheme = [](HWND window, LPCWSTR classList) -> HTHEME {
    notes.openedFor = window;
    notes.openedClasses.emplace_back(classList);
    return nullptr;
  };
  e.refreshColorPolicy = [] { ++notes.colorRefreshes; };
  e.refreshHighContrast = [](int one) -> BOOL { return (notes.contrastRefreshes += one) != 0; };
  e.systemAsksForDark = [] { return notes.asksForDark; };
  e.allowForWindow = [](HWND window, bool allow) { return notes.allowed.emplace_back(window, allow), true; };
  e.setApplicationMode = [](int one) { return notes.applicationModes += one; };
  e.allowForApplication = [](bool allow) { return (notes.applicationAllowances += allow ? 1 : 0) != 0; };
  e.isAllowedForWindow = [](HWND) { return notes.allowedForWindow; };
  e.setComposition = [](HWND, CompositionAttribute* what) -> BOOL {
    if (what->attribute == 26 && what->size == 4) notes.composed.push_back(*static_cast<int*>(what->data));
    return TRUE;
  };
  e.setWindowTheme = [](HWND window, LPCWSTR name, LPCWSTR idList) -> HRESULT {
    const bool noIds = idList != nullptr && *idList == L'\0';
    notes.themed.emplace_back(window, name != nullptr && (*name == L'\0') == noIds ? name : L"?");
    return S_OK;
  };
  e.drawBackground = [](HTHEME, HDC dc, int part, int state, LPCRECT rect, LPCRECT) -> HRESULT {
    notes.backgrounds.push_back({dc, part, state, *rect, L"", 0});
    return S_OK;
  };
  e.drawText = [](HTHEME, HDC dc, int part, int state, LPCWSTR text, int length, DWORD flags, DWORD, LPCRECT rect) -> HRESULT {
    notes.texts.push_back({dc, part, state, *rect, std::wstring(text, static_cast<std::size_t>(length)), flags});
    return S_OK;
  };
  e.systemParameters = [](UINT action, UINT size, PVOID data, UINT) -> BOOL {
    if (action != SPI_GETHIGHCONTRAST || size != 16) return FALSE;
    static_cast<HIGHCONTRASTW*>(data)->dwFlags = HCF_AVAILABLE | (notes.highContrast ? HCF_HIGHCONTRASTON : 0);
    return TRUE;
  };
  return e;
}
