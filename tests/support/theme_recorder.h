#pragma once

// A theme library made up for tests: answers as told and notes every call, so that dark mode can be watched on systems that lack
// the real entry points. One set of notes for the process; make a recorder at the start of each test.

#include <windows.h>

#include <map>
#include <string>
#include <utility>

#include "platform/text_format.h"
#include "ui/dark/dark_mode_entry_points.h"

struct ThemeNotes {
  bool asksForDark = true;
  bool allowedForWindow = true;
  bool highContrast = false;

  std::map<HWND, std::pair<std::wstring, std::wstring>> windows;  ///< theme, and whether each may be dark
  std::wstring drawn;                                             ///< what is drawn where, in order
  std::wstring opened;                                            ///< classes, "!" behind those for no window
  std::wstring application;                                       ///< by which call it may be dark
  int colorRefreshes = 0;
  int contrastRefreshes = 0;
  int titleBar = -1;
};

/// Dark mode over the made-up library for as long as this lives; afterwards it is off, as before start-up.
class ThemeRecorder {
 public:
  explicit ThemeRecorder(unsigned build = 19045, bool asksForDark = true, bool highContrast = false,
                         bool refreshesContrast = true) {
    notes = {};
    notes.asksForDark = asksForDark;
    notes.highContrast = highContrast;
    ThemeEntryPoints entries = EntryPoints();
    if (!refreshesContrast) entries.refreshHighContrast = nullptr;
    SetThemeEntryPointsForTest(entries, build);
  }
  ~ThemeRecorder() {
    SetThemeEntryPointsForTest({}, 0);
    notes = {};
  }
  ThemeRecorder(const ThemeRecorder&) = delete;

  inline static ThemeNotes notes;

 private:
  static ThemeEntryPoints EntryPoints() {
    ThemeEntryPoints e;
    e.openNonClientTheme = [](HWND window, LPCWSTR classList) -> HTHEME {
      notes.opened += std::wstring(L" ") + classList + (window != nullptr ? L"" : L"!");
      return nullptr;
    };
    e.refreshColorPolicy = [] { ++notes.colorRefreshes; };
    e.refreshHighContrast = [](int one) -> BOOL { return (notes.contrastRefreshes += one) != 0; };
    e.systemAsksForDark = [] { return notes.asksForDark; };
    e.allowForWindow = [](HWND window, bool allow) { return notes.windows[window].second = allow ? L"" : L" light", true; };
    e.setApplicationMode = [](int one) { return notes.application += FormatText(L"mode %d", one), one; };
    e.allowForApplication = [](bool allow) { return notes.application += allow ? L"allowed" : L"?", allow; };
    e.isAllowedForWindow = [](HWND) { return notes.allowedForWindow; };
    e.setComposition = [](HWND, CompositionAttribute* what) -> BOOL {
      if (what->attribute == 26 && what->size == 4) notes.titleBar = *static_cast<int*>(what->data);
      return TRUE;
    };
    e.setWindowTheme = [](HWND window, LPCWSTR name, LPCWSTR idList) -> HRESULT {
      const bool noIds = idList != nullptr && *idList == L'\0';
      notes.windows[window].first = name != nullptr && (*name == L'\0') == noIds ? noIds ? L"none" : name : L"?";
      ::SendMessageW(window, WM_THEMECHANGED, 0, 0);
      return S_OK;
    };
    e.drawBackground = [](HTHEME, HDC, int part, int state, LPCRECT r, LPCRECT) -> HRESULT {
      notes.drawn +=
          FormatText(L" back %d.%d at %d %d %d %d", part, state, int(r->left), int(r->top), int(r->right), int(r->bottom));
      return S_OK;
    };
    e.drawText = [](HTHEME, HDC, int part, int state, LPCWSTR text, int length, DWORD flags, DWORD, LPCRECT rect) -> HRESULT {
      notes.drawn +=
          FormatText(L", \"%.*ls\" %d.%d flags %x to %d", length, text, part, state, unsigned(flags), int(rect->right));
      return S_OK;
    };
    e.systemParameters = [](UINT action, UINT size, PVOID data, UINT) -> BOOL {
      if (action != SPI_GETHIGHCONTRAST || size != 16) return FALSE;
      static_cast<HIGHCONTRASTW*>(data)->dwFlags = HCF_AVAILABLE | (notes.highContrast ? HCF_HIGHCONTRASTON : 0);
      return TRUE;
    };
    return e;
  }
};
