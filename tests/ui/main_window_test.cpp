#include <gtest/gtest.h>

#include "platform/handles.h"
#include "res/messages.h"
#include "storage/settings_registry.h"
#include "tests/support/main_window_fixture.h"
#include "tests/support/theme_recorder.h"
#include "ui/framework/anchors.h"
#include "ui/message_box/message_box_model.h"

namespace {

WindowPlacement FrameOf(HWND window) {
  RECT rect{};
  ::GetWindowRect(window, &rect);
  return {rect.left, rect.top, rect.right, rect.bottom};
}

TEST_F(MainWindowTest, RemovesWhatIsSelectedAfterAYes) {
  rules.Append({Rule(1, L"a"), Rule(2, L"b"), Rule(3, L"c"), Rule(5, L"d"), Rule(6, L"e"), Rule(5, L"f"), Rule(5, L"g")});
  Open();
  SendCommand(Window(), IDC_REMOVE_RULE);  // nothing selected: would not return while it asks
  const struct {
    std::initializer_list<int> rows;
    const wchar_t* question;
    WORD answer;
    const wchar_t* left;
  } cases[] = {
      {{0, 1, 2}, L"Remove 3 selected rules?", IDNO, L"abcdefg"},
      {{1}, L"Remove the selected rule?", IDNO, L"abcdefg"},
      {{1}, L"Remove the selected rule?", IDYES, L"acdefg"},
      {{0, 1}, L"Remove 2 selected rules?", IDYES, L"defg"},
      // Of rules that share an id the first ones go.
      {{2, 3}, L"Remove 2 selected rules?", IDYES, L"eg"},
  };
  for (const auto& c : cases) {
    SelectRows(list, c.rows);
    HWND box = OpenDialog(IDM_REMOVE_RULE, L"Confirm Remove");
    EXPECT_EQ(TextOfItem(box, kMessageBoxTextId), c.question);
    EXPECT_EQ(FocusOf(box), ::GetDlgItem(box, IDNO));
    Answer(box, c.answer);
    std::wstring left;
    for (const ThresholdRule& rule : Rules()) left += rule.processPattern;
    EXPECT_EQ(left, c.left);
    EXPECT_EQ(RowCount(list), static_cast<int>(left.size()));
    ExpectSaved();
  }
}

TEST_F(MainWindowTest, DarkModeReachesListsButtonsAndTabs) {
  const ThemeRecorder theme;
  Open();
  for (const int id : {IDC_RULE_LIST, IDC_RECENT_ALERTS}) {
    EXPECT_EQ(::SendMessageW(Item(id), LVM_GETBKCOLOR, 0, 0), LRESULT{0x202020}) << id;
    EXPECT_EQ(::SendMessageW(Item(id), LVM_GETTEXTBKCOLOR, 0, 0), LRESULT{0x202020}) << id;
    EXPECT_EQ(::SendMessageW(Item(id), LVM_GETTEXTCOLOR, 0, 0), LRESULT{0xE0E0E0}) << id;
  }
  EXPECT_FALSE(::IsWindowVisible(Item(IDC_MAIN_GRIP)));
  EXPECT_EQ(theme->ThemeOf(Item(IDC_PRESETS)), L"Explorer");
  EXPECT_EQ(theme->ThemeOf(Item(IDC_LOG_PATH)), L"");

  HWND tabs = Item(IDC_TABS);
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

TEST_F(MainWindowTest, EveryWayOutKeepsAndEndsWhatItShould) {
  program.trayWindow = ::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  const struct {
    WORD command;
    bool keepsPlacement;
    bool savesSettings;
    bool endsProgram;
  } ways[] = {
      {IDCANCEL, true, false, false}, {IDM_CLOSE, true, false, false}, {IDOK, true, true, false}, {IDM_EXIT, false, false, true}};
  WindowPlacement first;
  WindowPlacement kept;
  for (const auto& way : ways) {
    SCOPED_TRACE(way.command);
    Open();
    if (!kept.HasSize()) first = FrameOf(Window());
    EXPECT_EQ(FrameOf(Window()), kept.HasSize() ? kept : first);
    const std::int32_t left = 40 + way.command % 100;
    const WindowPlacement moved = {left, 50, left + 800 + way.command % 10, 750};
    ::SetWindowPos(Window(), nullptr, left, 50, moved.right - left, 700, SWP_NOZORDER);
    ASSERT_TRUE(WaitUntil([&] { return FrameOf(Window()) == moved; }));
    Close(way.command);
    EXPECT_EQ(Window(), nullptr);
    kept = way.keepsPlacement ? moved : kept;
    EXPECT_EQ(settings.Get().mainDialogPlacement, kept);
    SettingsStore saved;
    LoadSettings(saved, engine);
    EXPECT_EQ(saved.Get().mainDialogPlacement == moved, way.savesSettings);
    MSG message;
    EXPECT_EQ(::PeekMessageW(&message, program.trayWindow, UWM_TERMINATE, UWM_TERMINATE, PM_REMOVE) != FALSE, way.endsProgram);
  }
  ::DestroyWindow(program.trayWindow);

  // A placement that cannot be seen is ignored.
  for (const WindowPlacement& placement :
       {WindowPlacement{-32000, -32000, -31840, -31972}, WindowPlacement{9000, 100, 10000, 900},
        WindowPlacement{100, 100, 100, 900}, WindowPlacement{300, 300, 200, 200}}) {
    settings.Update([&](AppSettings& all) { all.mainDialogPlacement = placement; });
    Open();
    EXPECT_EQ(FrameOf(Window()), first) << placement.left;
    Close(IDM_EXIT);
  }
}

TEST_F(MainWindowTest, SecondRequestBringsTheFirstForward) {
  WindowThread first([this] { MainDialogThread(program); });
  WindowThread second([this] { MainDialogThread(program); });  // at once, while the first may still be opening
  ASSERT_TRUE(WaitUntil([this] { return Window() != nullptr && ::IsWindowVisible(Window()); }));
  HWND window = Window();
  ::ShowWindow(window, SW_MINIMIZE);
  ASSERT_TRUE(WaitUntil([window] { return ::IsIconic(window); }));
  MainDialogThread(program);  // returns at once, with a window open
  EXPECT_TRUE(WaitUntil([window] { return !::IsIconic(window) && ::GetForegroundWindow() == window; }));
  EXPECT_EQ(Window(), window);
  EXPECT_EQ(::FindWindowExW(nullptr, window, nullptr, kMainWindowTitle), nullptr);
  EXPECT_EQ(::FindWindowW(nullptr, kMainWindowTitle), window);
}

TEST_F(MainWindowTest, TheListKeepsItsPlaceWhenARuleIsEdited) {
  RuleList many;
  for (std::uint32_t id = 1; id <= 200; ++id) many.push_back(Rule(id, L"a.exe"));
  rules.Append(many);
  Open();
  SelectRows(list, {150});
  ::SendMessageW(list, LVM_ENSUREVISIBLE, 150, FALSE);
  const LRESULT top = ::SendMessageW(list, LVM_GETTOPINDEX, 0, 0);
  Answer(OpenDialog(IDC_EDIT_RULE, kEditorTitle), IDOK);
  EXPECT_EQ(::SendMessageW(list, LVM_GETTOPINDEX, 0, 0), top);
  EXPECT_EQ(::SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED), 150);
  EXPECT_EQ(::SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0), 0);
}

}  // namespace
