#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

#include "platform/text_file.h"
#include "res/resource.h"
#include "test_program.h"
#include "ui/windows_of_program.h"
#include "window_driver.h"

namespace {

constexpr wchar_t kTitle[] = L"Vantora - Alert Log";
constexpr wchar_t kHeaderLine[] = L"Time,PID,Process,Violation\n";

class AlertLogWindowTest : public ::testing::Test {
 protected:
  void Add(std::uint32_t first, std::uint32_t count) {
    for (std::uint32_t pid = first; pid < first + count; ++pid) {
      test_.recentAlerts.Append({{2026, 3, 4, 5, 9, 7, 3, 0}, pid, L"app.exe", 1, L"Threads: 9 > 8"});
    }
  }

  [[nodiscard]] std::unique_ptr<WindowThread> Open() {
    return std::make_unique<WindowThread>([this] { AlertLogDialogThread(test_.program); });
  }

  /// Exports through the real dialog under a name without extension; the text of the file.
  std::wstring Export(const WindowThread& thread, HWND dialog, const std::wstring& name) {
    PostCommand(dialog, IDC_EXPORT_CSV);
    AnswerFileDialog(thread.WaitForDialogWith(kFileNameBox), test_.folder.File(name));
    EXPECT_EQ(thread.WaitForDialog(kTitle), dialog);
    // The window is back before the file is written.
    std::wstring text;
    EXPECT_TRUE(WaitUntil([&] { return !(text = ReadTextFile(test_.folder.File(name + L".csv")).value_or(L"")).empty(); }));
    return text;
  }

  TestProgram test_;
};

TEST_F(AlertLogWindowTest, ShowsAThousandAlertsOldestFirstWithoutDelay) {
  Add(1, 1200);
  const auto start = std::chrono::steady_clock::now();
  const auto thread = Open();
  HWND dialog = thread->WaitForDialog(kTitle);
  const auto elapsed = std::chrono::steady_clock::now() - start;
  std::printf("opened with 1000 rows after %lld ms\n",
              static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count()));
  EXPECT_LT(elapsed, std::chrono::seconds(2));
  HWND list = ::GetDlgItem(dialog, IDC_ALERT_LIST);
  ASSERT_EQ(RowCount(list), 1000);
  const wchar_t* const kFirst[] = {L"2026-03-05 09:07:03", L"201", L"app.exe", L"Threads: 9 > 8"};
  for (int column = 0; column < 4; ++column) EXPECT_EQ(Cell(list, 0, column), kFirst[column]);
  EXPECT_EQ(Cell(list, 999, 1), L"1200");
  Add(2000, 1);
  EXPECT_EQ(RowCount(list), 1000) << "a snapshot";
}

TEST_F(AlertLogWindowTest, ClearsAndExportsWhileAlertsArrive) {
  const std::wstring log = test_.folder.File(L"alerts.log");
  ASSERT_EQ(WriteWholeFile(log, "x"), WriteResult::kWritten);
  test_.settings.Update([&](AppSettings& settings) { settings.logFilePath = log; });
  Add(1, 1000);
  std::atomic<bool> stop{false};
  std::thread arriving([&] {
    for (std::uint32_t pid = 5000; !stop; ++pid) {
      Add(pid, 1);
      if (pid % 50 == 0) ::Sleep(1);
    }
  });
  const auto thread = Open();
  HWND dialog = thread->WaitForDialog(kTitle);
  const std::wstring exported = Export(*thread, dialog, L"all");
  EXPECT_EQ(exported.substr(0, std::size(kHeaderLine) - 1), kHeaderLine);
  EXPECT_EQ(std::count(exported.begin(), exported.end(), L'\n'), 1001);
  SendCommand(dialog, IDC_CLEAR_ALERT_LOG);
  EXPECT_EQ(RowCount(::GetDlgItem(dialog, IDC_ALERT_LIST)), 0);
  EXPECT_FALSE(test_.folder.Has(L"alerts.log"));
  stop = true;
  arriving.join();
}

TEST_F(AlertLogWindowTest, TwoWindowsAreSnapshotsOfTheirOwn) {
  Add(1, 3);
  const auto first = Open();
  HWND firstDialog = first->WaitForDialog(kTitle);
  const auto second = Open();
  HWND secondDialog = second->WaitForDialog(kTitle);
  ASSERT_NE(firstDialog, secondDialog);
  RecentAlerts::Cursor cursor;
  RecentAlerts::Changes changes;
  ASSERT_TRUE(test_.recentAlerts.TakeChanges(cursor, changes));

  SendCommand(firstDialog, IDC_CLEAR_ALERT_LOG);
  EXPECT_EQ(RowCount(::GetDlgItem(firstDialog, IDC_ALERT_LIST)), 0);
  EXPECT_EQ(RowCount(::GetDlgItem(secondDialog, IDC_ALERT_LIST)), 3);
  EXPECT_TRUE(test_.recentAlerts.AlertsChanged());
  EXPECT_EQ(Export(*second, secondDialog, L"after"), kHeaderLine);
  SendCommand(firstDialog, IDOK);
  EXPECT_TRUE(first->WaitForEnd());
  EXPECT_TRUE(::IsWindow(secondDialog));
}

}  // namespace
