// The page of recent alerts in the main window, and the alert log window.

#include <algorithm>
#include <atomic>
#include <thread>

#include "platform/file.h"
#include "platform/text_file.h"
#include "res/messages.h"
#include "tests/support/program_window_fixture.h"
#include "ui/alerts/alert_log_window.h"

namespace {

class AlertViewsTest : public ProgramWindowTest {
 protected:
  void Add(std::uint32_t firstPid, std::uint32_t count) {
    for (std::uint32_t pid = firstPid; pid < firstPid + count; ++pid) {
      recentAlerts.Append({{2026, 3, 4, 5, 9, 7, 3, 0}, pid, L"app.exe", 1, L"Threads: 9 > 8"});
    }
  }
  void MakeLogFile() const { ASSERT_EQ(WriteWholeFile(folder.File(L"alerts.log"), "x"), WriteResult::kWritten); }
  static void ExpectRow(HWND list, int row, int pid) {
    const std::wstring cells[] = {L"2026-03-05 09:07:03", std::to_wstring(pid), L"app.exe", L"Threads: 9 > 8"};
    for (int column = 0; column < 4; ++column) EXPECT_EQ(Cell(list, row, column), cells[column]);
  }

  /// Exports through the real dialog under a name without extension; the text of the file.
  std::wstring Export(HWND dialog, const std::wstring& name) {
    PostCommand(dialog, IDC_EXPORT_CSV);
    AnswerFileDialog(WaitForDialogWith(kFileNameBox), folder.File(name));
    // The file is begun after the chooser is gone, and the window answers again when it is written.
    EXPECT_TRUE(WaitUntil([&] { return folder.Has(name + L".csv"); }));
    ::SendMessageW(dialog, WM_NULL, 0, 0);
    return ReadTextFile(folder.File(name + L".csv")).value_or(L"");
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
    // The window looks every two seconds.
    EXPECT_TRUE(WaitUntil([page] { return Cell(page, 0, 1) == L"28"; }, 3'500));
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

TEST_F(AlertViewsTest, LogsShowAThousandClearAndExportWhileAlertsArrive) {
  constexpr wchar_t kTitle[] = L"Vantora - Alert Log";
  constexpr wchar_t kHeaderLine[] = L"Time,PID,Process,Violation\n";
  MakeLogFile();
  Add(1, 1200);
  const WindowThread firstThread([this] { AlertLogDialogThread(program); });
  HWND cleared = firstThread.WaitForDialog(kTitle);
  const WindowThread secondThread([this] { AlertLogDialogThread(program); });
  HWND other = secondThread.WaitForDialog(kTitle);
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
  EXPECT_EQ(RowCount(::GetDlgItem(cleared, IDC_ALERT_LIST)), 0);
  EXPECT_FALSE(folder.Has(L"alerts.log"));
  stop = true;
  arriving.join();
  recentAlerts.Clear();
  EXPECT_EQ(Export(other, L"after"), kHeaderLine);

  SendCommand(cleared, IDOK);
  EXPECT_TRUE(firstThread.WaitForEnd());
  HWND snapshot = ::GetDlgItem(other, IDC_ALERT_LIST);
  ASSERT_EQ(RowCount(snapshot), 1000);
  ExpectRow(snapshot, 0, 201);
  ExpectRow(snapshot, 999, 1200);
}

}  // namespace
