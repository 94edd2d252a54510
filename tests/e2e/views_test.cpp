// The views of alerts and the exclusions, driven in the running program as a user drives them, with what
// it then has in its files and registry.

#include <windows.h>

#include <algorithm>
#include <optional>
#include <string>

#include "app/messages.h"
#include "res/resource.h"
#include "tests/e2e/fixture.h"
#include "tests/e2e/process_load.h"

namespace e2e {
namespace {

constexpr int kFileNameBox = 0x47C;

class Views : public EndToEndTest {
 protected:
  void Start() {
    profile_.Set(L"PollIntervalSec", 1);
    program_.emplace();
    tray_ = program_->WaitForTray();
    ASSERT_NE(tray_, nullptr);
  }

  HWND OpenMainWindow() {
    ::PostMessageW(tray_, UWM_TRAYICON, 0, WM_LBUTTONUP);
    return program_->WaitForMainWindow();
  }

  /// A dialog of the program's with a visible control of the id.
  HWND WaitForDialogWith(int controlId) {
    return WaitForResult([&] {
      const auto find = [](HWND window, LPARAM parameter) -> BOOL {
        auto& search = *reinterpret_cast<Search*>(parameter);
        DWORD processId = 0;
        ::GetWindowThreadProcessId(window, &processId);
        if (processId != search.processId || !::IsWindowVisible(::GetDlgItem(window, search.controlId))) return TRUE;
        search.found = window;
        return FALSE;
      };
      Search search{program_->Id(), controlId, nullptr};
      ::EnumWindows(find, reinterpret_cast<LPARAM>(&search));
      return search.found;
    });
  }

  void AnswerFileDialog(const std::wstring& path) {
    HWND dialog = WaitForDialogWith(kFileNameBox);
    ASSERT_NE(dialog, nullptr);
    ::SendMessageW(::GetDlgItem(dialog, kFileNameBox), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    PostCommand(dialog, IDOK);
    ASSERT_TRUE(WaitUntil([dialog] { return !::IsWindow(dialog); }));
  }

  /// The bytes of a file in the data folder, once it has been written.
  std::string WaitForFile(const std::wstring& name) const {
    return WaitForResult([&] {
             auto bytes = ReadFileBytes(profile_.DataFolder() + L"\\" + name);
             return bytes && !bytes->empty() ? bytes : std::nullopt;
           })
        .value_or("no file");
  }

  std::optional<RunningProgram> program_;
  HWND tray_ = nullptr;

 private:
  struct Search {
    DWORD processId;
    int controlId;
    HWND found;
  };
};

TEST_F(Views, AlertsOfEarlierRunsAreShownExportedAndCleared) {
  std::string log = kMark;
  for (int i = 0; i < 1500; ++i) log += "2026-03-05 09:07:03\t" + std::to_string(i) + "\tapp.exe\tThreads: 9 > 8\r\n";
  WriteFileBytes(profile_.LogFile(), log);
  Start();
  HWND window = OpenMainWindow();
  ASSERT_NE(window, nullptr);
  HWND page = ::GetDlgItem(window, IDC_RECENT_ALERTS);
  EXPECT_TRUE(WaitUntil([page] { return ListRowCount(page) == 20; }));
  EXPECT_EQ(ListCellText(page, 0, 1), L"1499");
  PostCommand(window, IDCANCEL);
  ASSERT_TRUE(WaitUntil([window] { return !::IsWindow(window); }));
  window = OpenMainWindow();
  ASSERT_NE(window, nullptr);
  page = ::GetDlgItem(window, IDC_RECENT_ALERTS);
  EXPECT_TRUE(WaitUntil([page] { return ListRowCount(page) == 20; })) << "a later window shows them without a new alert";

  ASSERT_TRUE(program_->ChooseFromTrayMenu(L'l'));
  HWND alertLog = program_->WaitForWindow(kDialogClass, L"Vantora - Alert Log");
  ASSERT_NE(alertLog, nullptr);
  HWND list = ::GetDlgItem(alertLog, IDC_ALERT_LIST);
  EXPECT_EQ(ListRowCount(list), 1000);
  EXPECT_EQ(ListCellText(list, 0, 1), L"500");
  PostClick(alertLog, IDC_EXPORT_CSV);
  AnswerFileDialog(profile_.DataFolder() + L"\\alerts");
  const std::string csv = WaitForFile(L"alerts.csv");
  EXPECT_TRUE(csv.starts_with(std::string(kMark) +
                              "Time,PID,Process,Violation\r\n\"2026-03-05 09:07:03\",500,\"app.exe\",\"Threads: 9 > 8\"\r\n"))
      << csv.substr(0, 200);
  EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 1001);
  PostClick(alertLog, IDC_CLEAR_ALERT_LOG);
  EXPECT_TRUE(WaitUntil([&] { return !PathExists(profile_.LogFile()); }));
  EXPECT_EQ(ListRowCount(list), 0);
  EXPECT_TRUE(WaitUntil([page] { return ListRowCount(page) == 0; })) << "the page follows at its next tick";
  EXPECT_TRUE(program_->End());
}

TEST_F(Views, AnExcludedProcessAlertsNoMoreFromTheNextCycleOn) {
  profile_.WriteRules({"1," + OwnName() + ",1,0,0.0,0.0,0.0,1,0,0,2,0"});
  Start();
  const auto alerts = [this] { return debug_.Count(program_->Id(), "ALERT:"); };
  ASSERT_TRUE(WaitUntil([&] { return alerts() >= 2; })) << "one a cycle, without a cooldown";
  HWND window = OpenMainWindow();
  ASSERT_NE(window, nullptr);
  PostCommand(window, IDM_EXCLUSIONS);
  HWND dialog = program_->WaitForWindow(kDialogClass, L"Process Exclusions");
  ASSERT_NE(dialog, nullptr);
  std::wstring text = L"other.exe\n  ";
  for (const char c : OwnName()) text += static_cast<wchar_t>(c);
  ::SendMessageW(::GetDlgItem(dialog, IDC_EXCLUSIONS), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
  PostCommand(dialog, IDOK);
  ASSERT_TRUE(WaitUntil([dialog] { return !::IsWindow(dialog); }));
  // The cycle under way may still alert; without the exclusion every one would.
  const auto before = alerts();
  EXPECT_TRUE(NeverWithin(4'000, [&] { return alerts() > before + 1; }));
  const auto saved = profile_.Get(kSettings, L"Exclusions");
  ASSERT_TRUE(saved);
  EXPECT_EQ(saved->type, static_cast<DWORD>(REG_MULTI_SZ));
  EXPECT_TRUE(program_->End());
}

}  // namespace
}  // namespace e2e
