#include "ui/dark_mode.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <optional>

#include "res/resource.h"
#include "tests/ui/leak_counter.h"
#include "tests/ui/theme_recorder.h"
#include "ui/dark_menu_bar.h"

namespace {

INT_PTR CALLBACK PlainDialog(HWND, UINT message, WPARAM, LPARAM) { return message == WM_INITDIALOG; }

/// One of the program's dialogs, without the program's code behind it.
class TestDialog {
 public:
  explicit TestDialog(WORD templateId = IDD_RULE_EDITOR)
      : window_(::CreateDialogParamW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(templateId), nullptr, &PlainDialog, 0)) {}
  ~TestDialog() { ::DestroyWindow(window_); }
  TestDialog(const TestDialog&) = delete;
  TestDialog& operator=(const TestDialog&) = delete;
  [[nodiscard]] HWND Window() const { return window_; }

 private:
  HWND window_;
};

TEST(DarkMode, IsAvailableWithEveryRequiredEntry) {
  struct Case {
    const char* name;
    unsigned build;
    void (*takeAway)(ThemeEntryPoints&);
    bool available;
  };
  const Case kCases[] = {
      {"whole", 19045, [](ThemeEntryPoints&) {}, true},
      {"106", 19045, [](ThemeEntryPoints& e) { e.refreshHighContrast = nullptr; }, true},
      {"133", 19045, [](ThemeEntryPoints& e) { e.allowForWindow = nullptr; }, false},
      {"135, newer form", 18362, [](ThemeEntryPoints& e) { e.setApplicationMode = nullptr; }, false},
      {"135, older form not needed", 18362, [](ThemeEntryPoints& e) { e.allowForApplication = nullptr; }, true},
      {"135, older form", 18361, [](ThemeEntryPoints& e) { e.allowForApplication = nullptr; }, false},
      {"135, newer form not there yet", 18361, [](ThemeEntryPoints& e) { e.setApplicationMode = nullptr; }, true},
  };
  for (const Case& test : kCases) {
    SCOPED_TRACE(test.name);
    const ThemeRecorder recorder;
    recorder.Notes() = {};
    ThemeEntryPoints entries = RecordingEntryPoints();
    test.takeAway(entries);
    SetThemeEntryPointsForTest(entries, test.build);
    EXPECT_EQ(DarkModeAvailable(), test.available);
    EXPECT_EQ(DarkModeOn(), test.available);
    EXPECT_EQ(recorder->applicationModes, test.available && test.build >= 18362 ? 1 : 0);
    EXPECT_EQ(recorder->applicationAllowances, test.available && test.build < 18362 ? 1 : 0);
    EXPECT_EQ(recorder->colorRefreshes, test.available ? 1 : 0);
  }
}

TEST(DarkMode, IsOnWhenAskedForWithoutHighContrast) {
  for (const bool asks : {true, false}) {
    for (const bool contrast : {true, false}) {
      const ThemeRecorder recorder(19045, asks, contrast);
      EXPECT_TRUE(DarkModeAvailable());
      EXPECT_EQ(DarkModeOn(), asks && !contrast);
    }
  }
}

struct ColorAnswer {
  COLORREF text;
  COLORREF background;
  std::optional<COLORREF> brush;
};

ColorAnswer AskColors(HWND dialog, UINT message) {
  HDC dc = ::CreateCompatibleDC(nullptr);
  const LRESULT brush = ::SendMessageW(dialog, message, reinterpret_cast<WPARAM>(dc), 0);
  ColorAnswer answer{::GetTextColor(dc), ::GetBkColor(dc), std::nullopt};
  LOGBRUSH description{};
  if (brush != 0 && ::GetObjectW(reinterpret_cast<HBRUSH>(brush), sizeof(description), &description) != 0) {
    answer.brush = description.lbColor;
  }
  ::DeleteDC(dc);
  return answer;
}

TEST(DarkDialog, AnswersEveryColourQuestion) {
  const ThemeRecorder recorder;
  const TestDialog dialog;
  ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x203040, {});
  for (UINT message = WM_CTLCOLORMSGBOX; message <= WM_CTLCOLORSTATIC; ++message) {
    const ColorAnswer answer = AskColors(dialog.Window(), message);
    EXPECT_EQ(answer.text, 0xE0E0E0u) << message;
    EXPECT_EQ(answer.background, 0x203040u) << message;
    EXPECT_EQ(answer.brush, COLORREF{0x203040}) << message;
  }
}

// Wine's link control deletes the brush that it is given. The dialog must not lose its own by that.
TEST(DarkDialog, KeepsItsBrushWhenALinkDeletesTheOneItGot) {
  const ThemeRecorder recorder;
  const TestDialog dialog;
  HWND link = ::CreateWindowW(WC_LINK, L"x", WS_CHILD, 0, 0, 20, 20, dialog.Window(), nullptr, nullptr, nullptr);
  ASSERT_NE(link, nullptr);
  ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x202020, {});
  HDC dc = ::CreateCompatibleDC(nullptr);
  for (int i = 0; i < 2; ++i) {
    const LRESULT brush =
        ::SendMessageW(dialog.Window(), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(link));
    EXPECT_EQ(::GetObjectType(reinterpret_cast<HGDIOBJ>(brush)), DWORD{OBJ_BRUSH});
    EXPECT_EQ(::GetDCBrushColor(dc), 0x202020u);
    ::DeleteObject(reinterpret_cast<HGDIOBJ>(brush));
    EXPECT_EQ(AskColors(dialog.Window(), WM_CTLCOLORSTATIC).brush, COLORREF{0x202020});
  }
  ::DeleteDC(dc);
}

TEST(DarkDialog, LeavesColoursAloneWhenOffOrUnavailable) {
  for (const bool available : {true, false}) {
    const ThemeRecorder recorder(19045, false);
    if (!available) SetThemeEntryPointsForTest({}, 19045);
    recorder.Notes() = {};
    const TestDialog dialog;
    const int ids[] = {IDOK};
    ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x202020, ids, DarkMenuBar::kDraw);
    EXPECT_NE(AskColors(dialog.Window(), WM_CTLCOLORSTATIC).text, 0xE0E0E0u);
    EXPECT_NE(AskColors(dialog.Window(), WM_CTLCOLORDLG).brush, COLORREF{0x202020});
    ::SendMessageW(dialog.Window(), WM_THEMECHANGED, 0, 0);
    ::SendMessageW(dialog.Window(), WM_SETTINGCHANGE, 0, reinterpret_cast<LPARAM>(L"ImmersiveColorSet"));
    // Off still themes the listed controls, as light ones; unavailable calls nothing at all.
    EXPECT_EQ(recorder->themed.empty(), !available);
    EXPECT_EQ(recorder->allowed.empty(), !available);
    EXPECT_EQ(recorder->colorRefreshes + recorder->contrastRefreshes, available ? 2 : 0);
    for (const bool allow : recorder->allowed) EXPECT_FALSE(allow);
  }
}

TEST(DarkMenuBar, DrawsEachItemInItsState) {
  const ThemeRecorder recorder;
  const TestDialog dialog(IDD_MAIN);
  const HMENU menu = ::LoadMenuW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_MAIN_MENU));
  ::SetMenu(dialog.Window(), menu);
  ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x202020, {}, DarkMenuBar::kDraw);
  for (const auto& [itemState, state] :
       {std::pair<UINT, int>{0, 0}, {ODS_DISABLED | ODS_SELECTED, 3}, {ODS_SELECTED, 2}, {ODS_INACTIVE, 1}}) {
    SCOPED_TRACE(itemState);
    recorder.Notes() = {};
    MenuBarItemDraw draw{};
    draw.item.itemState = itemState;
    draw.item.rcItem = {10, 20, 60, 40};
    draw.bar = {menu, nullptr, 0};
    draw.position = 1;
    EXPECT_EQ(::SendMessageW(dialog.Window(), kDrawMenuBarItem, 0, reinterpret_cast<LPARAM>(&draw)), 0);
    ASSERT_EQ(recorder->backgrounds.size(), 1u);
    ASSERT_EQ(recorder->texts.size(), 1u);
    EXPECT_EQ(recorder->backgrounds[0].state, state);
    EXPECT_EQ(recorder->texts[0].state, state);
    EXPECT_EQ(recorder->texts[0].text, L"&Rules");
  }
}

TEST(DarkMode, WindowsGiveEverythingBack) {
  const ThemeRecorder recorder;
  const int ids[] = {IDC_EXPORT_CSV, IDOK};
  EXPECT_EQ(GrowthOver(200,
                       [&] {
                         const TestDialog dialog(IDD_ALERT_LOG);
                         ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x202020, ids, DarkMenuBar::kDraw);
                         ApplyDarkModeToListView(::GetDlgItem(dialog.Window(), IDC_ALERT_LIST));
                         AskColors(dialog.Window(), WM_CTLCOLORDLG);
                       }),
            LeakCount{});
}

}  // namespace
