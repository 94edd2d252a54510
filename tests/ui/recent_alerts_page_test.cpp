#include "ui/recent_alerts_page.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include <memory>

#include "app/messages.h"
#include "platform/file.h"
#include "res/resource.h"
#include "test_program.h"
#include "ui/windows_of_program.h"
#include "window_driver.h"

namespace {

class RecentAlertsPageTest : public ::testing::Test {
 protected:
  void Open() {
    window_ = std::make_unique<WindowThread>([this] { MainDialogThread(test_.program); });
    dialog_ = window_->WaitForDialog(kMainWindowTitle);
    list_ = ::GetDlgItem(dialog_, IDC_RECENT_ALERTS);
    ASSERT_NE(list_, nullptr);
  }

  void Add(std::uint32_t first, std::uint32_t count) {
    for (std::uint32_t pid = first; pid < first + count; ++pid) {
      test_.recentAlerts.Append({{2026, 3, 4, 5, 9, 7, 3, 0}, pid, L"app.exe", 1, L"Threads: 9 > 8"});
    }
  }

  void Tick() const { ::SendMessageW(dialog_, WM_TIMER, IDT_RECENT_ALERTS, 0); }

  std::vector<std::wstring> Pids() const {
    std::vector<std::wstring> pids;
    for (int row = 0; row < RowCount(list_); ++row) pids.push_back(Cell(list_, row, 1));
    return pids;
  }

  static std::vector<std::wstring> NewestOf(int newest, int rows) {
    std::vector<std::wstring> pids;
    for (int i = 0; i < rows; ++i) pids.push_back(std::to_wstring(newest - i));
    return pids;
  }

  TestProgram test_;
  std::unique_ptr<WindowThread> window_;
  HWND dialog_ = nullptr;
  HWND list_ = nullptr;
};

TEST_F(RecentAlertsPageTest, ANewWindowShowsTheNewestAlertsAndFollowsThem) {
  Add(1, 25);
  RecentAlerts::Cursor elsewhere;
  RecentAlerts::Changes changes;
  ASSERT_TRUE(test_.recentAlerts.TakeChanges(elsewhere, changes));  // an earlier window has seen them already
  Open();
  EXPECT_TRUE(WaitUntil([this] { return RowCount(list_) == 20; })) << "the window's first tick is its own";
  EXPECT_EQ(Pids(), NewestOf(25, 20));
  EXPECT_EQ(Cell(list_, 0, 0), L"2026-03-05 09:07:03");
  EXPECT_EQ(Cell(list_, 0, 2), L"app.exe");
  EXPECT_EQ(Cell(list_, 0, 3), L"Threads: 9 > 8");
  Add(26, 1);
  Tick();
  EXPECT_EQ(Pids(), NewestOf(26, 20));
  test_.recentAlerts.Clear();  // as the alert log window does
  Add(100, 3);
  Tick();
  EXPECT_EQ(Pids(), NewestOf(102, 3));
}

TEST_F(RecentAlertsPageTest, ClearLogOfTheContextMenuEmptiesEverything) {
  const std::wstring log = test_.folder.File(L"alerts.log");
  for (const bool hasLog : {true, false}) {
    test_.settings.Update([&](AppSettings& settings) { settings.logFilePath = hasLog ? log : std::wstring(); });
    ASSERT_EQ(WriteWholeFile(log, "x"), WriteResult::kWritten);
    Add(1, 5);
    if (window_ == nullptr) Open();
    Tick();
    ASSERT_EQ(RowCount(list_), 5);
    if (hasLog) {
      ::PostMessageW(list_, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(5, 80));
      ::PostMessageW(list_, WM_RBUTTONUP, 0, MAKELPARAM(5, 80));
    } else {  // as Shift+F10 does
      ::PostMessageW(list_, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(list_), -1);
    }
    HWND menu = window_->WaitForMenu();
    EXPECT_EQ(MenuTexts(menu), (std::vector<std::wstring>{L"Clear Log"}));
    ChooseMenuItem(dialog_, 0);
    EXPECT_TRUE(WaitUntil([this] { return RowCount(list_) == 0; }));
    EXPECT_TRUE(WaitUntil([&] { return test_.folder.Has(L"alerts.log") != hasLog; }));
    EXPECT_EQ(test_.recentAlerts.Size(), 0u);
    EXPECT_TRUE(test_.recentAlerts.AlertsChanged());
  }
}

}  // namespace
