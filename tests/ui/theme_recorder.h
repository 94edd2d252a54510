#pragma once

// A theme library made up for tests: answers as told and notes every call, so that dark mode can be watched on systems that lack
// the real entry points. One set of notes for the process; make a Recorder at the start of each test.

#include <windows.h>

#include <string>
#include <vector>

#include "ui/dark_mode_entry_points.h"

struct ThemeNotes {
  bool asksForDark = true;
  bool allowedForWindow = true;
  bool highContrast = false;

  struct Allowed {
    HWND window;
    bool allow;
    bool operator==(const Allowed&) const = default;
  };
  struct Themed {
    HWND window;
    std::wstring name;
    bool idListEmpty;  ///< an empty text, not null
  };
  struct Drawn {
    HDC dc;
    int part;
    int state;
    RECT rect;
    std::wstring text;
    DWORD flags;
  };
  std::vector<Allowed> allowed;
  std::vector<Themed> themed;
  std::vector<Drawn> backgrounds;
  std::vector<Drawn> texts;
  std::vector<int> composed;  ///< values of the dark title-bar attribute
  std::vector<std::wstring> openedClasses;
  HWND openedFor = nullptr;
  int colorRefreshes = 0;
  int contrastRefreshes = 0;
  int applicationModes = 0;
  int applicationAllowances = 0;

  /// The last theme the window got: "Explorer", "" for none, "-" when it never got one.
  [[nodiscard]] std::wstring ThemeOf(HWND window) const;
};

/// Dark mode over the made-up library for as long as this lives; afterwards it is off, as before start-up.
class ThemeRecorder {
 public:
  explicit ThemeRecorder(unsigned build = 19045, bool asksForDark = true, bool highContrast = false);
  ~ThemeRecorder();
  ThemeRecorder(const ThemeRecorder&) = delete;
  ThemeRecorder& operator=(const ThemeRecorder&) = delete;
  [[nodiscard]] ThemeNotes& Notes() const;
  ThemeNotes* operator->() const { return &Notes(); }
};

/// The full table, for tests that take entries away.
[[nodiscard]] ThemeEntryPoints RecordingEntryPoints();
