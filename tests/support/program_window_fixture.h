#pragma once

// The main window as a part of its program: with a tray window that only takes notes, the saved settings, the clipboard, and
// what a command opens beside the window.

#include <string>
#include <utility>
#include <vector>

#include "platform/handles.h"
#include "storage/settings_registry.h"
#include "tests/support/main_window_fixture.h"

/// The text goes to the clipboard as it stands, with a terminator only when it holds one; none leaves the clipboard empty.
inline void SetClipboard(const std::wstring& text) {
  const ClipboardLock clipboard(nullptr);
  ASSERT_TRUE(clipboard.IsOpen());
  ::EmptyClipboard();
  if (text.empty()) return;
  HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, text.size() * sizeof(wchar_t));
  text.copy(static_cast<wchar_t*>(::GlobalLock(memory)), text.size());
  ::GlobalUnlock(memory);
  ASSERT_NE(::SetClipboardData(CF_UNICODETEXT, memory), nullptr);
}

class ProgramWindowTest : public MainWindowTest {
 protected:
  using Posts = std::vector<std::pair<UINT, WPARAM>>;

  ProgramWindowTest() {
    settings.Update([this](AppSettings& s) { s.logFilePath = folder.File(L"alerts.log"); });
    program.trayWindow = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
  }
  ~ProgramWindowTest() override { ::DestroyWindow(program.trayWindow); }

  void Command(int id) const { SendCommand(Window(), id); }
  void Click(int id) const { ::SendMessageW(Item(id), BM_CLICK, 0, 0); }
  void Type(int id, const std::wstring& text) const { ::SetDlgItemTextW(Window(), id, text.c_str()); }
  [[nodiscard]] std::wstring Text(int id) const { return TextOfItem(Window(), id); }
  [[nodiscard]] bool Checked(int id) const { return ::IsDlgButtonChecked(Window(), id) == BST_CHECKED; }
  [[nodiscard]] bool ApplyEnabled() const { return ::IsWindowEnabled(Item(IDC_APPLY)) != FALSE; }

  /// What the tray window was asked to do since the last call.
  [[nodiscard]] Posts TakePosts() const {
    Posts posts;
    MSG message;
    while (::PeekMessageW(&message, program.trayWindow, WM_USER, WM_APP, PM_REMOVE)) {
      posts.emplace_back(message.message, message.wParam);
    }
    return posts;
  }

  /// Whether the next start reads what the program has in memory now, but for the window's place, which is saved by itself.
  [[nodiscard]] bool SavedAsInMemory() const {
    TestProgram next;
    LoadSettings(next.settings, next.engine);
    AppSettings saved = next.settings.Get();
    saved.mainDialogPlacement = settings.Get().mainDialogPlacement;
    return saved == settings.Get() && next.engine.IntervalMs() == engine.IntervalMs() &&
           *next.engine.Exclusions() == *engine.Exclusions();
  }
};
