#pragma once

// The main window as a part of its program: with a registry hive of the test's own, a tray window that only takes notes, the
// clipboard, and what a command opens beside the window.

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "platform/handles.h"
#include "storage/settings_registry.h"
#include "system/run_value.h"
#include "tests/ui/main_window_fixture.h"

/// This process's visible window of the class, once there is one; with a control's id a dialog that takes input and shows it.
inline HWND WaitForWindowOf(const wchar_t* className, int controlId = 0) {
  HWND window = nullptr;
  WaitUntil([&] {
    while ((window = ::FindWindowExW(nullptr, window, className, nullptr)) != nullptr) {
      DWORD process = 0;
      ::GetWindowThreadProcessId(window, &process);
      if (process != ::GetCurrentProcessId() || !::IsWindowVisible(window)) continue;
      if (controlId == 0 || (::IsWindowEnabled(window) && ::IsWindowVisible(::GetDlgItem(window, controlId)))) return true;
    }
    return false;
  });
  return window;
}
inline HWND WaitForDialogWith(int controlId) { return WaitForWindowOf(L"#32770", controlId); }
inline HWND WaitForPopup() { return WaitForWindowOf(L"#32768"); }

/// The text goes to the clipboard as it stands, with a terminator only when it holds one; none leaves the clipboard empty.
inline void SetClipboard(const std::wstring& text) {
  const ClipboardLock clipboard(nullptr);
  ASSERT_TRUE(clipboard.IsOpen());
  ::EmptyClipboard();
  if (text.empty()) return;
  const std::size_t bytes = text.size() * sizeof(wchar_t);
  HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
  std::memcpy(::GlobalLock(memory), text.data(), bytes);
  ::GlobalUnlock(memory);
  ASSERT_NE(::SetClipboardData(CF_UNICODETEXT, memory), nullptr);
}

class ProgramWindowTest : public MainWindowTest {
 protected:
  using Posts = std::vector<std::pair<UINT, WPARAM>>;

  void SetUp() override {
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kHive);
    ::RegCreateKeyW(HKEY_CURRENT_USER, kHive, &hive_);
    ASSERT_EQ(::RegOverridePredefKey(HKEY_CURRENT_USER, hive_), ERROR_SUCCESS);
    ::RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Another program", REG_SZ, L"", 2);
    program.trayWindow = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
  }
  void TearDown() override {
    if (Window() != nullptr) Close();
    ::DestroyWindow(program.trayWindow);
    ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    ::RegCloseKey(hive_);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kHive);
  }

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

  /// Whether the next start reads what the program has in memory now.
  [[nodiscard]] bool SavedAsInMemory() const {
    TestProgram next;
    LoadSettings(next.settings, next.engine);
    AppSettings expected = settings.Get();
    if (expected.logFilePath.empty())
      expected.logFilePath = next.settings.Get().logFilePath;  // an empty one is read as the default
    return next.settings.Get() == expected && next.engine.IntervalMs() == engine.IntervalMs() &&
           *next.engine.Exclusions() == *engine.Exclusions();
  }

 private:
  static constexpr wchar_t kHive[] = L"Software\\VantoraWindowTest";
  HKEY hive_ = nullptr;
};
