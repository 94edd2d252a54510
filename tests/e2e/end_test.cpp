// The program ends promptly and in order whatever is open.

#include <windows.h>

#include <shellapi.h>

#include "app/messages.h"
#include "res/resource.h"
#include "tests/e2e/fixture.h"

namespace e2e {
namespace {

constexpr DWORD kPromptlyMs = 5'000;

struct OpenWindowsCase {
  const char* name;
  std::vector<int> commands;  ///< to the main window, each of which opens something
  std::size_t windows;        ///< visible dialogs then
};

class End : public EndToEndTest {
 protected:
  static std::size_t CountDialogs(const RunningProgram& program) {
    struct Search {
      DWORD processId;
      std::size_t count;
    } search{program.Id(), 0};
    ::EnumWindows(
        [](HWND window, LPARAM parameter) -> BOOL {
          auto& counted = *reinterpret_cast<Search*>(parameter);
          DWORD processId = 0;
          ::GetWindowThreadProcessId(window, &processId);
          wchar_t windowClass[16]{};
          ::GetClassNameW(window, windowClass, 16);
          if (processId == counted.processId && ::IsWindowVisible(window) && ::wcscmp(windowClass, kDialogClass) == 0) {
            ++counted.count;
          }
          return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.count;
  }

  void ExpectSavedOnce(const RunningProgram& program) {
    EXPECT_EQ(debug_.Count(program.Id(), "MonitorEngine::Stop - Stopped"), 1u);
    EXPECT_EQ(debug_.Count(program.Id(), "RuleStore::Save - Saved"), 1u);
    EXPECT_EQ(shell_.IconCount(), 0u);
    EXPECT_EQ(profile_.Get(kSettings, L"PollIntervalSec"), RegistryValue::Number(30));
  }
};

TEST_F(End, TrayExitWithWindowsOpenEndsPromptlyAndSavesOnce) {
  const OpenWindowsCase cases[] = {
      {"main window", {}, 1},
      {"rule editor", {IDM_ADD_RULE}, 2},
      {"message box", {IDM_RESET_RULES}, 2},
      {"About box", {IDM_ABOUT}, 2},
      {"exclusions", {IDM_EXCLUSIONS}, 2},
      {"file chooser", {IDM_EXPORT_RULES}, 2},
      {"two alert logs", {IDM_ALERT_LOG, IDM_ALERT_LOG}, 3},
  };
  for (const OpenWindowsCase& c : cases) {
    SCOPED_TRACE(c.name);
    const RunningProgram program(L"");
    HWND window = program.WaitForMainWindow();
    ASSERT_NE(window, nullptr);
    for (const int command : c.commands) PostCommand(window, command);
    ASSERT_TRUE(WaitUntil([&] { return CountDialogs(program) == c.windows; })) << CountDialogs(program);
    ASSERT_TRUE(program.OpenTrayMenu());
    ::PostMessageW(program.WaitForTray(), WM_CHAR, L'x', 0);
    EXPECT_EQ(program.WaitForExit(kPromptlyMs), 0u);
    ExpectSavedOnce(program);
  }
}

TEST_F(End, ACellUnderEditIsLeftAsItWas) {
  const std::string row = "1,a.exe,1,0,0.0,0.0,0.0,5,0,0,3,60";
  profile_.WriteRules({row});
  const RunningProgram program(L"");
  HWND window = program.WaitForMainWindow();
  ASSERT_NE(window, nullptr);
  HWND list = ::GetDlgItem(window, IDC_RULE_LIST);
  ASSERT_TRUE(WaitUntil([&] { return ListRowCount(list) == 1; }));
  // The pattern's cell: right of the first column, in the row below the header.
  constexpr LPARAM kCell = MAKELPARAM(120, 28);
  for (const UINT message : {UINT{WM_LBUTTONDOWN}, UINT{WM_LBUTTONUP}, UINT{WM_LBUTTONDBLCLK}, UINT{WM_LBUTTONUP}}) {
    ::PostMessageW(list, message, message == WM_LBUTTONUP ? WPARAM{0} : WPARAM{MK_LBUTTON}, kCell);
  }
  HWND box = WaitForResult([&] { return ::FindWindowExW(list, nullptr, L"Edit", nullptr); });
  ASSERT_NE(box, nullptr);
  ASSERT_EQ(TextOf(box), L"a.exe");
  ::SendMessageW(box, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"b.exe"));
  ASSERT_TRUE(program.End());
  const auto saved = ReadFileBytes(profile_.RulesFile());
  ASSERT_TRUE(saved);
  EXPECT_EQ(*saved, std::string(kMark) + kRulesHeader + "\r\n" + row + "\r\n");
}

TEST_F(End, AnUpdateCheckAndItsMessageBoxDoNotHoldTheEndUp) {
  // Checks are switched off, so this one ends at once with its message box, which runs on the tray window's own thread.
  const RunningProgram program(L"/tray");
  HWND tray = program.WaitForTray();
  ::PostMessageW(tray, UWM_CHECK_FOR_UPDATES, 1, 0);
  ASSERT_TRUE(debug_.WaitFor(program.Id(), "Update check finished. Handling results."));
  ASSERT_NE(program.WaitForWindow(kDialogClass, nullptr), nullptr);
  EXPECT_EQ(RunToEnd(L"-terminate"), 0u);
  EXPECT_EQ(program.WaitForExit(kPromptlyMs), 0u);
  ExpectSavedOnce(program);
}

TEST_F(End, TheOpenTrayMenuDoesNotHoldTheEndUp) {
  const RunningProgram program(L"/tray");
  ASSERT_TRUE(program.OpenTrayMenu());
  EXPECT_EQ(RunToEnd(L"-terminate"), 0u);
  EXPECT_EQ(program.WaitForExit(kPromptlyMs), 0u);
  ExpectSavedOnce(program);
}

TEST_F(End, FileExitInTheMainWindowEndsTheProgram) {
  const RunningProgram program(L"");
  HWND window = program.WaitForMainWindow();
  ASSERT_NE(window, nullptr);
  PostCommand(window, IDM_EXIT);
  EXPECT_EQ(program.WaitForExit(kPromptlyMs), 0u);
  EXPECT_EQ(shell_.IconCount(), 0u);
}

}  // namespace
}  // namespace e2e
