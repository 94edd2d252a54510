#pragma once

// The real main window on a thread of its own over stores of the test's, with a registry hive and a tray window that are made up:
// what the settings, their menus and the version link need to be driven as a user drives them.

#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <thread>
#include <vector>

#include "res/resource.h"
#include "storage/settings_registry.h"
#include "tests/ui/test_program.h"
#include "tests/ui/window_driver.h"
#include "ui/windows_of_program.h"

/// This process's visible dialogs that have the control; -1: any.
inline std::vector<HWND> DialogsWith(int controlId) {
  std::vector<HWND> found;
  for (HWND window = nullptr; (window = ::FindWindowExW(nullptr, window, L"#32770", nullptr)) != nullptr;) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    if (process != ::GetCurrentProcessId() || !::IsWindowVisible(window)) continue;
    if (controlId < 0 || ::GetDlgItem(window, controlId) != nullptr) found.push_back(window);
  }
  return found;
}

inline HWND WaitForDialog(int controlId) {
  return WaitUntil([controlId] { return !DialogsWith(controlId).empty(); }) ? DialogsWith(controlId).front() : nullptr;
}

class SettingsFixture : public testing::Test, protected TestProgram {
 protected:
  struct Posted {
    UINT message;
    WPARAM wParam;
    bool operator==(const Posted&) const = default;
  };

  void SetUp() override {
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kHive);
    ::RegCreateKeyW(HKEY_CURRENT_USER, kHive, &hive_);
    ASSERT_EQ(::RegOverridePredefKey(HKEY_CURRENT_USER, hive_), ERROR_SUCCESS);
    ::RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Another program", REG_SZ, L"", 2);
    program.trayWindow = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
  }
  void TearDown() override {
    CloseWindow();
    ::DestroyWindow(program.trayWindow);
    ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    ::RegCloseKey(hive_);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kHive);
  }

  void OpenWindow() {
    thread_ = std::thread([this] { MainDialogThread(program); });
    ASSERT_TRUE(WaitUntil([this] { return ::IsWindowVisible(program.MainDialogHandle) != FALSE; }));
    window = program.MainDialogHandle;
  }
  void CloseWindow() {
    if (window != nullptr) PostCommand(window, IDCANCEL);
    if (thread_.joinable()) thread_.join();
    window = nullptr;
  }

  [[nodiscard]] HWND Item(int id) const { return ::GetDlgItem(window, id); }
  [[nodiscard]] std::wstring Text(int id) const { return TextOfItem(window, id); }
  void Type(int id, const std::wstring& text) const {
    ::SendMessageW(Item(id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
  }
  [[nodiscard]] bool Checked(int id) const { return ::SendMessageW(Item(id), BM_GETCHECK, 0, 0) == BST_CHECKED; }
  void Click(int id) const { ::SendMessageW(Item(id), BM_CLICK, 0, 0); }
  [[nodiscard]] bool ApplyEnabled() const { return ::IsWindowEnabled(Item(IDC_APPLY)) != FALSE; }
  void Command(WORD id) const { SendCommand(window, id); }
  /// Presses a button of a dialog and waits until the dialog is gone.
  static void Answer(HWND dialog, int id) {
    PostCommand(dialog, id);
    EXPECT_TRUE(WaitUntil([dialog] { return ::IsWindow(dialog) == FALSE; }));
  }

  /// What the tray window was asked to do since the last call.
  [[nodiscard]] std::vector<Posted> TakePosted() const {
    std::vector<Posted> posted;
    MSG message;
    while (::PeekMessageW(&message, program.trayWindow, WM_USER, WM_APP, PM_REMOVE)) {
      posted.push_back({message.message, message.wParam});
    }
    return posted;
  }

  /// What the registry holds, as the next start reads it.
  [[nodiscard]] bool SavedAsInMemory() const {
    SettingsStore loaded;
    MonitorEngine other(std::make_shared<SimulatedProcessTable>(), SystemClock(), 1);
    LoadSettings(loaded, other);
    AppSettings expected = settings.Get();
    if (expected.logFilePath.empty()) expected.logFilePath = loaded.Get().logFilePath;  // an empty one is read as the default
    return loaded.Get() == expected && other.IntervalMs() == engine.IntervalMs() && *other.Exclusions() == *engine.Exclusions();
  }

  HWND window = nullptr;

 private:
  static constexpr wchar_t kHive[] = L"Software\\VantoraSettingsTest";
  HKEY hive_ = nullptr;
  std::thread thread_;
};
