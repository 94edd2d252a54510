// The page of recent alerts in the main window, and the alert log window.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "app/messages.h"
#include "platform/file.h"
#include "platform/text_file.h"
#include "tests/ui/program_window_fixture.h"

namespace {

constexpr wchar_t kLogTitle[] = L"Vantora - Alert Log";

class AlertViewsTest : public ProgramWindowTest {
 protected:
  /// Alerts of processes with ids of one row.
  void Add(std::uint32_t firstPid, std::uint32_t count) {
    for (std::uint32_t pid = firstPid; pid < firstPid + count; ++pid) {
      recentAlerts.Append({{2026, 3, 4, 5, 9, 7, 3, 0}, pid, L"app.exe", 1, L"Threads: 9 > 8"});
    }
  }
  void MakeLogFile() {
    const std::wstring path = folder.File(L"alerts.log");
    ASSERT_EQ(WriteWholeFile(path, "x"), WriteResult::kWritten);
    settings.Update([&path](AppSettings& s) { s.logFilePath = path; });
  }
  static void ExpectRow(HWND list, int row, int pid) {
    const std::wstring cells[] = {L"2026-03-05 09:07:03", std::to_wstring(pid), L"app.exe", L"Threads: 9 > 8"};
    for (int column = 0; column < 4; ++column) EXPECT_EQ(Cell(list, row, column), cells[column]);
  }

  /// Exports through the real dialog under a name without extension; the text of the file.
  std::wstring Export(HWND dialog, const std::wstring& name) {
    PostCommand(dialog, IDC_EXPORT_CSV);
    AnswerFileDialog(WaitForDialogWith(kFileNameBox), folder.File(name));
    EXPECT_TRUE(WaitUntil([dialog] { return ::IsWindowEnabled(dialog) != FALSE; }));
    // The window is back before the file is written.
    std::wstring text;
    EXPECT_TRUE(WaitUntil([&] { return !(text = ReadTextFile(folder.File(name + L".csv")).value_or(L"")).empty(); }));
    return text;
  }
};

TEST_F(AlertViewsTest, ThePageShowsTheNewestAlertsAndItsMenuClearsThem) {
  Add(1, 25);
  RecentAlerts::Cursor elsewhere;
  RecentAlerts::Changes changes;
  ASSERT_TRUE(recentAlerts.TakeChanges(elsewhere, changes));  // an earlier window has seen them already
  Open();
  HWND page = Item(IDC_RECENT_ALERTS);
  EXPECT_TRUE(WaitUntil([page] { return RowCount(page) == 20; })) << "the window's first tick is its own";
  ExpectRow(page, 0, 25);
  for (const bool byMouse : {true, false}) {
    MakeLogFile();
    Add(26, 3);
    ::SendMessageW(Window(), WM_TIMER, IDT_RECENT_ALERTS, 0);
    ASSERT_EQ(RowCount(page), byMouse ? 20 : 3);
    for (int row = 0; row < RowCount(page); ++row) ExpectRow(page, row, 28 - row);
    if (byMouse) {
      ::PostMessageW(page, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(5, 80));
      ::PostMessageW(page, WM_RBUTTONUP, 0, MAKELPARAM(5, 80));
    } else {  // as Shift+F10 does
      ::PostMessageW(page, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(page), -1);
    }
    EXPECT_EQ(MenuTexts(WaitForPopup()), (std::vector<std::wstring>{L"Clear Log"}));
    ChooseMenuItem(Window(), 0);
    EXPECT_TRUE(WaitUntil([&] { return RowCount(page) == 0 && !folder.Has(L"alerts.log"); }));
    EXPECT_EQ(recentAlerts.Size(), 0U);
  }
}

TEST_F(AlertViewsTest, TheLogOpensWithAThousandAlertsOldestFirstWithoutDelay) {
  Add(1, 1200);
  const auto start = std::chrono::steady_clock::now();
  const WindowThread thread([this] { AlertLogDialogThread(program); });
  HWND alerts = ::GetDlgItem(thread.WaitForDialog(kLogTitle), IDC_ALERT_LIST);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  ASSERT_EQ(RowCount(alerts), 1000);
  ExpectRow(alerts, 0, 201);
  ExpectRow(alerts, 999, 1200);
}

TEST_F(AlertViewsTest, TwoLogsClearAndExportWhileAlertsArrive) {
  constexpr wchar_t kHeaderLine[] = L"Time,PID,Process,Violation\n";
  MakeLogFile();
  Add(1, 1000);
  const WindowThread windows[] = {WindowThread([this] { AlertLogDialogThread(program); }),
                                  WindowThread([this] { AlertLogDialogThread(program); })};
  HWND cleared = windows[0].WaitForDialog(kLogTitle);
  HWND other = windows[1].WaitForDialog(kLogTitle);
  const auto rows = [](HWND dialog) { return RowCount(::GetDlgItem(dialog, IDC_ALERT_LIST)); };
  std::atomic<bool> stop{false};
  std::thread arriving([&] {
    for (std::uint32_t pid = 5000; !stop; ++pid) {
      Add(pid, 1);
      if (pid % 50 == 0) ::Sleep(1);
    }
  });
  const std::wstring exported = Export(other, L"all");
  EXPECT_TRUE(exported.starts_with(kHeaderLine));
  EXPECT_EQ(std::count(exported.begin(), exported.end(), L'\n'), 1001);
  SendCommand(cleared, IDC_CLEAR_ALERT_LOG);
  EXPECT_EQ(rows(cleared), 0);
  EXPECT_FALSE(folder.Has(L"alerts.log"));
  stop = true;
  arriving.join();

  SendCommand(cleared, IDC_CLEAR_ALERT_LOG);
  EXPECT_EQ(Export(other, L"after"), kHeaderLine);
  EXPECT_EQ(rows(other), 1000) << "a snapshot of its own";
  SendCommand(cleared, IDOK);
  EXPECT_TRUE(windows[0].WaitForEnd());
  EXPECT_TRUE(::IsWindow(other));
}

}  // namespace
