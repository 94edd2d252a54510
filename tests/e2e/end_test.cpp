// The program ends promptly and in order, by whatever way and whatever is open.

#include <windows.h>

#include "tests/support/program_test.h"

namespace e2e {
namespace {

class End : public EndToEndTest {
 protected:
  using Step = std::function<void(const RunningProgram&)>;

  /// Sends the main window commands, each of which opens a dialog.
  static Step Dialogs(const std::vector<int>& commands) {
    return [commands](const RunningProgram& program) {
      for (const int command : commands) PostCommand(program.WaitForMainWindow(), command);
      EXPECT_TRUE(WaitUntil([&] { return program.DialogCount() == std::ssize(commands) + 1; })) << program.DialogCount();
    };
  }
  /// Types into the pattern's cell of the first rule.
  static void EditCell(const RunningProgram& program) {
    HWND list = ::GetDlgItem(program.WaitForMainWindow(), IDC_RULE_LIST);
    ASSERT_TRUE(WaitUntil([&] { return RowCount(list) == 1; }));
    // Right of the first column, in the row below the header.
    for (const int message : {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP}) {
      ::PostMessageW(list, static_cast<UINT>(message), message == WM_LBUTTONUP ? 0 : MK_LBUTTON, MAKELPARAM(120, 28));
    }
    HWND box = WaitForResult([&] { return ::FindWindowExW(list, nullptr, L"Edit", nullptr); });
    ASSERT_EQ(TextOf(box), L"a.exe");
    ::SendMessageW(box, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"b.exe"));
  }
};

TEST_F(End, IsPromptAndSavesOnceWhateverIsOpen) {
  const auto chooseExit = [](const auto& program) { program.ChooseFromTrayMenu(L'x'); };
  const auto terminate = [](const auto&) { EXPECT_EQ(RunToEnd(L"-terminate"), 0u); };
  const struct {
    const char* name;
    Step open;
    Step end;
    DWORD found = 86'400;  ///< "PollIntervalSec"
    DWORD saved = 86'400;
  } rows[] = {
      {"rule editor and two alert logs", Dialogs({IDM_ALERT_LOG, IDM_ALERT_LOG, IDM_ADD_RULE}), chooseExit, 0, 30},
      {"message box", Dialogs({IDM_RESET_RULES}), chooseExit, 86'401, 30},
      {"file chooser", Dialogs({IDM_EXPORT_RULES}), chooseExit, 1, 1},
      {"cell under edit", EditCell, [](const auto& program) { PostCommand(program.WaitForMainWindow(), IDM_EXIT); }},
      {"tray menu", [](const auto& program) { EXPECT_TRUE(program.OpenTrayMenu()); }, terminate},
      // Checks are switched off, so this one ends at once with its message box, which runs on the tray window's own thread.
      {"message box of an update check",
       [](const auto& program) {
         program.PostToTray(UWM_CHECK_FOR_UPDATES, 1, 0);
         EXPECT_NE(program.WaitForBox(L"Vantora", L"No updates available."), nullptr);
       },
       terminate},
  };
  const std::string rule = "1,a.exe,1,0,0.0,0.0,0.0,5,0,0,3,60";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    profile_.WriteRules({rule});
    profile_.Set(L"PollIntervalSec", row.found);
    const RunningProgram program(L"");
    ASSERT_NE(program.WaitForMainWindow(), nullptr);
    row.open(program);
    row.end(program);
    EXPECT_EQ(program.WaitForExit(5'000), 0u);
    EXPECT_TRUE(debug_.ComesOnce(program.Id(), "MonitorEngine::Stop - Stopped"));
    EXPECT_TRUE(debug_.ComesOnce(program.Id(), "RuleStore::Save - Saved"));
    EXPECT_EQ(shell_.Calls().back(), L"delete");
    EXPECT_EQ(profile_.Get(kSettings, L"PollIntervalSec"), RegistryValue::Number(row.saved));
    EXPECT_EQ(ReadWholeFile(profile_.RulesFile()), kRulesHead + rule + "\r\n");
  }
}

}  // namespace
}  // namespace e2e
