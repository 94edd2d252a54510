// What the main window and the windows that it opens show and do beyond the sessions.

#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "platform/handles.h"
#include "platform/text_file.h"
#include "product_config.h"
#include "res/resource.h"
#include "tests/support/diagnostic_lines.h"
#include "tests/support/test_program.h"
#include "tests/support/theme_recorder.h"
#include "tests/support/window_driver.h"
#include "ui/alerts/alert_log_window.h"
#include "ui/dialogs/about_dialog.h"
#include "ui/main_window/main_window_thread.h"

namespace {

class MainWindowTest : public testing::Test, protected TestProgram {};

TEST_F(MainWindowTest, DarkModeReachesListsAndTabs) {
  const ThemeRecorder theme;
  const WindowThread thread([this] { MainDialogThread(program); });
  HWND window = thread.WaitForDialog(kMainWindowTitle);
  for (const int id : {IDC_RULE_LIST, IDC_RECENT_ALERTS}) {
    EXPECT_EQ(::SendDlgItemMessageW(window, id, LVM_GETBKCOLOR, 0, 0), LRESULT{0x202020}) << id;
    EXPECT_EQ(::SendDlgItemMessageW(window, id, LVM_GETTEXTBKCOLOR, 0, 0), LRESULT{0x202020}) << id;
    EXPECT_EQ(::SendDlgItemMessageW(window, id, LVM_GETTEXTCOLOR, 0, 0), LRESULT{0xE0E0E0}) << id;
  }
  EXPECT_FALSE(::IsWindowVisible(::GetDlgItem(window, IDC_MAIN_GRIP)));

  HWND tabs = ::GetDlgItem(window, IDC_TABS);
  RECT second{};
  ::SendMessageW(tabs, TCM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&second));
  ::UpdateWindow(tabs);
  const WindowDc dc(tabs);
  // Inside both tabs and beside the last one.
  for (const LONG x : {LONG{4}, second.left + 4, second.right - 4, second.right + 40}) {
    EXPECT_TRUE(WaitUntil([&] { return ::GetPixel(dc.Get(), x, (second.top + second.bottom) / 2) == 0x202020; })) << x;
  }
  bool light = false;
  for (LONG x = second.left; x < second.right; ++x) {
    for (LONG y = second.top; y < second.bottom; ++y) light = light || ::GetPixel(dc.Get(), x, y) == 0xE0E0E0;
  }
  EXPECT_TRUE(light) << "the tab's text";
}

TEST_F(MainWindowTest, TwoRequestsAtOnceOpenOneWindow) {
  const WindowThread first([this] { MainDialogThread(program); });
  const WindowThread second([this] { MainDialogThread(program); });
  ASSERT_TRUE(WaitUntil([this] { return program.MainDialogHandle.Get() != nullptr; }));
  EXPECT_TRUE(WaitUntil([&] { return first.WaitForEnd(0) || second.WaitForEnd(0); })) << "the other request is through";
  EXPECT_TRUE(WaitUntil([] { return DialogsOfThisProcess().size() == 1; }));
}

/// Read back as a screen reader does. Where the system refuses names the program has told by a line.
TEST_F(MainWindowTest, ControlsWithoutAVisibleNameHaveOneForScreenReaders) {
  const DiagnosticLines lines;
  const WindowThread thread([this] { MainDialogThread(program); });
  HWND window = thread.WaitForDialog(kMainWindowTitle);
  const std::pair<int, std::wstring> names[] = {{IDC_RULE_LIST, L"Rules"},
                                                {IDC_RECENT_ALERTS, L"Recent alerts"},
                                                {IDC_LOG_PATH, L"Alert log file"},
                                                {IDC_LOG_BROWSE, L"Choose the alert log file"},
                                                {IDC_SOUND_PATH, L"Alert sound file"},
                                                {IDC_SOUND_BROWSE, L"Choose the alert sound file"}};
  for (const auto& [id, name] : names) {
    EXPECT_TRUE(AccessibleNameOf(::GetDlgItem(window, id)) == name ||
                DiagnosticLines::Has(L"SetAccessibleNames - " + std::to_wstring(id) + L", " + name + L": 80004001"))
        << id;
  }
}

TEST_F(MainWindowTest, LogsShowAThousandAlertsClearAndExportWhileMoreArrive) {
  const auto add = [this](std::uint32_t pid) {
    recentAlerts.Append({{2026, 3, 4, 5, 9, 7, 3, 0}, pid, L"app.exe", 1, L"Threads: 9 > 8"});
  };
  for (std::uint32_t pid = 1; pid <= 1200; ++pid) add(pid);
  const WindowThread firstThread([this] { AlertLogDialogThread(program); });
  HWND cleared = firstThread.WaitForDialog(L"Vantora - Alert Log");
  const WindowThread secondThread([this] { AlertLogDialogThread(program); });
  HWND other = secondThread.WaitForDialog(L"Vantora - Alert Log");
  std::atomic<bool> stop{false};
  std::thread arriving([&] {
    for (std::uint32_t pid = 5000; !stop; ++pid) {
      add(pid);
      if (pid % 50 == 0) ::Sleep(1);
    }
  });
  PostCommand(other, IDC_EXPORT_CSV);
  AnswerFileDialog(WaitForDialogWith(kFileNameBox), folder.File(L"all.csv"));
  const auto linesOf = [](const std::wstring& text) { return std::count(text.begin(), text.end(), L'\n'); };
  EXPECT_TRUE(WaitUntil([&] { return linesOf(ReadTextFile(folder.File(L"all.csv")).value_or(L"")) == 1001; }));
  SendCommand(cleared, IDC_CLEAR_ALERT_LOG);
  stop = true;
  arriving.join();
  EXPECT_EQ(RowCount(::GetDlgItem(cleared, IDC_ALERT_LIST)), 0);
  HWND snapshot = ::GetDlgItem(other, IDC_ALERT_LIST);
  ASSERT_EQ(RowCount(snapshot), 1000);
  EXPECT_EQ(Cell(snapshot, 0, 1) + L" " + Cell(snapshot, 999, 1), L"201 1200");
}

TEST_F(MainWindowTest, AboutOpensThePageOnlyFromItsLink) {
  std::vector<std::pair<HWND, std::wstring>> opened;
  const WindowThread thread([&] {
    RunAboutDialog(nullptr, program, [&](HWND owner, const wchar_t* address) { opened.emplace_back(owner, address); });
  });
  HWND dialog = thread.WaitForDialog(L"About Vantora");
  ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDC_ABOUT_LINK, STN_DBLCLK), 0);
  for (const int id : {IDC_ABOUT_NAME, IDC_ABOUT_VERSION, IDC_ABOUT_ICON, IDC_ABOUT_LINK}) {
    EXPECT_TRUE(opened.empty()) << id;
    ::SendDlgItemMessageW(dialog, id, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    ::SendDlgItemMessageW(dialog, id, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
  }
  EXPECT_EQ(opened, (decltype(opened){{dialog, L"" VANTORA_PRODUCT_PAGE}}));
}

}  // namespace
