#include "ui/dark_mode.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <uxtheme.h>

#include <algorithm>
#include <optional>

#include "platform/handles.h"
#include "res/resource.h"
#include "tests/ui/leak_counter.h"
#include "tests/ui/theme_recorder.h"
#include "ui/dark_menu_bar.h"
#include "ui/dark_scroll_bar.h"

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
  [[nodiscard]] HWND Add(const wchar_t* className, DWORD style, int id) const {
    return ::CreateWindowExW(0, className, L"x", WS_CHILD | style, 0, 0, 20, 20, window_,
                             reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
  }

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
      {"49", 19045, [](ThemeEntryPoints& e) { e.openNonClientTheme = nullptr; }, false},
      {"104", 19045, [](ThemeEntryPoints& e) { e.refreshColorPolicy = nullptr; }, false},
      {"106", 19045, [](ThemeEntryPoints& e) { e.refreshHighContrast = nullptr; }, true},
      {"132", 19045, [](ThemeEntryPoints& e) { e.systemAsksForDark = nullptr; }, false},
      {"133", 19045, [](ThemeEntryPoints& e) { e.allowForWindow = nullptr; }, false},
      {"135, newer form", 18362, [](ThemeEntryPoints& e) { e.setApplicationMode = nullptr; }, false},
      {"135, older form not needed", 18362, [](ThemeEntryPoints& e) { e.allowForApplication = nullptr; }, true},
      {"135, older form", 18361, [](ThemeEntryPoints& e) { e.allowForApplication = nullptr; }, false},
      {"135, newer form not there yet", 18361, [](ThemeEntryPoints& e) { e.setApplicationMode = nullptr; }, true},
      {"137", 19045, [](ThemeEntryPoints& e) { e.isAllowedForWindow = nullptr; }, false},
      {"composition", 19045, [](ThemeEntryPoints& e) { e.setComposition = nullptr; }, true},
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

TEST(DarkMode, TitleBarFollowsWhatIsAskedForNow) {
  const TestDialog dialog;
  for (const unsigned build : {17763u, 18361u, 18362u, 22000u}) {
    const ThemeRecorder recorder(build);
    for (int bits = 0; bits < 8; ++bits) {
      recorder->allowedForWindow = (bits & 1) != 0;
      recorder->asksForDark = (bits & 2) != 0;
      recorder->highContrast = (bits & 4) != 0;
      recorder->composed.clear();
      RefreshTitleBarTheme(dialog.Window());
      if (build < 18362) {
        EXPECT_EQ(::GetPropW(dialog.Window(), L"UseImmersiveDarkModeColors"),
                  reinterpret_cast<HANDLE>(INT_PTR{bits == 3 ? 1 : 0}));
        EXPECT_TRUE(recorder->composed.empty());
      } else {
        EXPECT_EQ(recorder->composed, std::vector<int>{bits == 3 ? 1 : 0});
      }
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
  HWND link = dialog.Add(WC_LINK, 0, 3000);
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
    for (const auto& note : recorder->allowed) EXPECT_FALSE(note.allow);
  }
}

TEST(DarkDialog, GivesEveryKindOfControlItsTheme) {
  struct Case {
    const wchar_t* className;
    DWORD style;
    const wchar_t* listed;         // when its id is in the list and dark mode is off: the list's rule alone
    const wchar_t* child;          // build 19045, as any child
    const wchar_t* childDisabled;  // build 19045
    const wchar_t* childNewBuild;  // build 22000
  };
  constexpr const wchar_t* kExplorer = L"Explorer";
  constexpr const wchar_t* kNone = L"";
  constexpr const wchar_t* kNever = L"-";
  const Case kCases[] = {
      {L"Button", BS_PUSHBUTTON, kExplorer, kExplorer, kExplorer, kExplorer},
      {L"BUTTON", BS_DEFPUSHBUTTON, kExplorer, kExplorer, kExplorer, kExplorer},
      {L"Button", BS_CHECKBOX, kNone, kNone, kExplorer, kExplorer},
      {L"Button", BS_AUTOCHECKBOX, kNone, kNone, kExplorer, kExplorer},
      {L"Button", BS_RADIOBUTTON, kNone, kNone, kNone, kNone},
      {L"Button", BS_3STATE, kNone, kNone, kNone, kNone},
      {L"Button", BS_AUTO3STATE, kNone, kNone, kExplorer, kExplorer},
      {L"Button", BS_GROUPBOX, kNone, kNone, kNone, kNone},
      {L"Button", BS_AUTORADIOBUTTON, kNone, kNone, kNone, kNone},
      {L"ComboBox", CBS_DROPDOWNLIST, kNone, kNone, kNone, kNone},
      {L"Edit", 0, kNone, kNever, kNever, kNever},
      {L"Static", 0, kNone, kNever, kNever, kNever},
  };
  constexpr int kId = 3000;
  const auto themeOf = [&](const Case& test, unsigned build, bool dark, bool listed, DWORD extraStyle) {
    const ThemeRecorder recorder(build, dark);
    const TestDialog dialog(IDD_EXCLUSIONS);
    HWND control = dialog.Add(test.className, test.style | extraStyle, kId);
    const int ids[] = {listed ? kId : 3001};
    recorder->themed.clear();
    ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x202020, ids);
    const std::vector<ThemeNotes::Allowed>& allowed = recorder->allowed;
    EXPECT_EQ(std::count(allowed.begin(), allowed.end(), ThemeNotes::Allowed{control, dark}), (listed ? 1 : 0) + (dark ? 1 : 0));
    for (const auto& note : recorder->themed) EXPECT_EQ(note.idListEmpty, note.name.empty());
    return recorder->ThemeOf(control);
  };
  for (const Case& test : kCases) {
    SCOPED_TRACE(testing::Message() << "style " << test.style << " of a "
                                    << testing::PrintToString(std::wstring(test.className)));
    EXPECT_EQ(themeOf(test, 19045, false, true, 0), test.listed);
    EXPECT_EQ(themeOf(test, 19045, false, false, 0), kNever);
    EXPECT_EQ(themeOf(test, 19045, true, false, 0), test.child);
    EXPECT_EQ(themeOf(test, 19045, true, false, WS_DISABLED), test.childDisabled);
    EXPECT_EQ(themeOf(test, 22000, true, false, 0), test.childNewBuild);
  }
}

TEST(DarkDialog, RefreshesBySettingChange) {
  struct Case {
    const wchar_t* setting;
    int colorRefreshes;
    bool themes;
  };
  for (const bool hasContrastEntry : {true, false}) {
    for (const Case& test : {Case{L"ImmersiveColorSet", 1, true}, Case{L"IMMERSIVECOLORSET", 1, true},
                             Case{L"ImmersiveColorSets", 0, false}, Case{L"Environment", 0, false}, Case{nullptr, 0, false}}) {
      const ThemeRecorder recorder;
      ThemeEntryPoints entries = RecordingEntryPoints();
      if (!hasContrastEntry) entries.refreshHighContrast = nullptr;
      SetThemeEntryPointsForTest(entries, 19045);
      const TestDialog dialog;
      const int ids[] = {IDOK};
      ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x202020, ids);
      recorder.Notes() = {};
      ::SendMessageW(dialog.Window(), WM_SETTINGCHANGE, 0, reinterpret_cast<LPARAM>(test.setting));
      EXPECT_EQ(recorder->colorRefreshes, test.colorRefreshes);
      EXPECT_EQ(recorder->contrastRefreshes, hasContrastEntry ? 1 : 0);
      EXPECT_EQ(recorder->composed.size(), test.themes ? 1u : 0u);
      EXPECT_EQ(recorder->ThemeOf(::GetDlgItem(dialog.Window(), IDOK)), test.themes ? L"Explorer" : L"-");
    }
  }
}

/// A column header being drawn, as the header asks its list.
class HeaderDraw {
 public:
  HeaderDraw() : dc_(::CreateCompatibleDC(nullptr)) { ::SetTextColor(dc_, 0x123456); }
  ~HeaderDraw() { ::DeleteDC(dc_); }
  HeaderDraw(const HeaderDraw&) = delete;
  HeaderDraw& operator=(const HeaderDraw&) = delete;
  LRESULT Send(HWND list, DWORD stage) const {
    NMCUSTOMDRAW draw{};
    draw.hdr = {reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETHEADER, 0, 0)), 0, NM_CUSTOMDRAW};
    draw.dwDrawStage = stage;
    draw.hdc = dc_;
    return ::SendMessageW(list, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&draw));
  }
  [[nodiscard]] COLORREF TextColor() const { return ::GetTextColor(dc_); }

 private:
  HDC dc_;
};

TEST(DarkListView, DrawsItsHeaderInTheThemesColour) {
  const ThemeRecorder recorder;
  const TestDialog dialog(IDD_ALERT_LOG);
  HWND list = ::GetDlgItem(dialog.Window(), IDC_ALERT_LIST);
  HWND header = reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETHEADER, 0, 0));
  ASSERT_NE(header, nullptr);
  ApplyDarkModeToListView(list);
  EXPECT_EQ(recorder->ThemeOf(list), L"ItemsView");
  EXPECT_EQ(recorder->ThemeOf(header), L"ItemsView");
  EXPECT_EQ(::SendMessageW(list, LVM_GETBKCOLOR, 0, 0), 0x202020);
  EXPECT_EQ(::SendMessageW(list, LVM_GETTEXTBKCOLOR, 0, 0), 0x202020);
  EXPECT_EQ(::SendMessageW(list, LVM_GETTEXTCOLOR, 0, 0), 0xE0E0E0);

  ASSERT_TRUE(::IsThemeActive()) << "this system has no theme to show the colour with";
  const HeaderDraw draw;
  EXPECT_EQ(draw.Send(list, CDDS_PREPAINT), CDRF_NOTIFYITEMDRAW);
  EXPECT_EQ(draw.TextColor(), 0x123456u);
  EXPECT_EQ(draw.Send(list, CDDS_ITEMPREPAINT), CDRF_DODEFAULT);
  EXPECT_EQ(draw.TextColor(), 0u);  // no theme change yet: the cell as it was made

  recorder->allowed.clear();
  ::SendMessageW(list, WM_THEMECHANGED, 0, 0);
  EXPECT_EQ(recorder->allowed, (std::vector<ThemeNotes::Allowed>{{list, true}, {header, true}}));
  COLORREF expected = 0xE0E0E0;
  if (HTHEME theme = ::OpenThemeData(header, L"Header")) {
    ::GetThemeColor(theme, 1, 0, 3803, &expected);
    ::CloseThemeData(theme);
  }
  EXPECT_EQ(draw.Send(list, CDDS_ITEMPREPAINT), CDRF_DODEFAULT);
  EXPECT_EQ(draw.TextColor(), expected);
}

TEST(DarkListView, LightHeaderStaysUnlessTheSystemAsksNow) {
  const ThemeRecorder recorder(19045, false);
  const TestDialog dialog(IDD_ALERT_LOG);
  HWND list = ::GetDlgItem(dialog.Window(), IDC_ALERT_LIST);
  ApplyDarkModeToListView(list);
  EXPECT_NE(::SendMessageW(list, LVM_GETTEXTCOLOR, 0, 0), 0xE0E0E0);
  const HeaderDraw draw;
  draw.Send(list, CDDS_ITEMPREPAINT);
  EXPECT_EQ(draw.TextColor(), 0x123456u);
  recorder->asksForDark = true;
  recorder->highContrast = true;
  draw.Send(list, CDDS_ITEMPREPAINT);
  EXPECT_EQ(draw.TextColor(), 0x123456u);
  recorder->highContrast = false;
  draw.Send(list, CDDS_ITEMPREPAINT);
  EXPECT_EQ(draw.TextColor(), 0u);
}

/// The main window's resource with its menu, and a memory context to draw into.
class MenuBarTest : public testing::Test {
 protected:
  MenuBarTest() : dc_(::CreateCompatibleDC(nullptr)) {
    menu_ = ::LoadMenuW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_MAIN_MENU));
    ::SetMenu(dialog_.Window(), menu_);
    ApplyDarkModeToDialog(dialog_.Window(), 0xE0E0E0, 0x202020, {}, DarkMenuBar::kDraw);
  }
  ~MenuBarTest() override { ::DeleteDC(dc_); }

  LRESULT DrawBar() const {
    MenuBarDraw draw{menu_, dc_, 0};
    return ::SendMessageW(dialog_.Window(), kDrawMenuBar, 0, reinterpret_cast<LPARAM>(&draw));
  }
  LRESULT DrawItem(int position, UINT state) const {
    MenuBarItemDraw draw{};
    draw.item.itemState = state;
    draw.item.rcItem = {10, 20, 60, 40};
    draw.bar = {menu_, dc_, 0};
    draw.position = position;
    return ::SendMessageW(dialog_.Window(), kDrawMenuBarItem, 0, reinterpret_cast<LPARAM>(&draw));
  }

  ThemeRecorder recorder_;
  TestDialog dialog_{IDD_MAIN};
  HMENU menu_ = nullptr;
  HDC dc_;
};

TEST_F(MenuBarTest, DrawsTheBarOnePixelHigherThanItIs) {
  EXPECT_EQ(DrawBar(), 0);
  ASSERT_EQ(recorder_->backgrounds.size(), 1u);
  MENUBARINFO info{};
  info.cbSize = sizeof(info);
  RECT window{};
  ASSERT_TRUE(::GetMenuBarInfo(dialog_.Window(), OBJID_MENU, 0, &info) && ::GetWindowRect(dialog_.Window(), &window));
  const auto& drawn = recorder_->backgrounds[0];
  EXPECT_EQ(drawn.dc, dc_);
  EXPECT_EQ(drawn.part, 14);
  EXPECT_EQ(drawn.state, 1);
  EXPECT_EQ(drawn.rect.left, info.rcBar.left - window.left);
  EXPECT_EQ(drawn.rect.top, info.rcBar.top - window.top - 1);
  EXPECT_EQ(drawn.rect.right, info.rcBar.right - window.left);
  EXPECT_EQ(drawn.rect.bottom, info.rcBar.bottom - window.top);
}

TEST_F(MenuBarTest, DrawsEachItemInItsState) {
  struct Case {
    UINT itemState;
    int state;
  };
  constexpr DWORD kFlags = DT_CENTER | DT_VCENTER | DT_SINGLELINE;
  for (const Case& test :
       {Case{0, 0}, Case{ODS_GRAYED, 3}, Case{ODS_DISABLED | ODS_SELECTED, 3}, Case{ODS_SELECTED, 2},
        Case{ODS_HOTLIGHT | ODS_INACTIVE, 2}, Case{ODS_DEFAULT, 1}, Case{ODS_INACTIVE, 1}, Case{ODS_NOACCEL, 0}}) {
    SCOPED_TRACE(test.itemState);
    recorder_->backgrounds.clear();
    recorder_->texts.clear();
    EXPECT_EQ(DrawItem(1, test.itemState), 0);
    ASSERT_EQ(recorder_->backgrounds.size(), 1u);
    ASSERT_EQ(recorder_->texts.size(), 1u);
    EXPECT_EQ(recorder_->backgrounds[0].part, 14);
    EXPECT_EQ(recorder_->backgrounds[0].state, test.state);
    EXPECT_EQ(recorder_->texts[0].part, 14);
    EXPECT_EQ(recorder_->texts[0].state, test.state);
    EXPECT_EQ(recorder_->texts[0].text, L"&Rules");
    EXPECT_EQ(recorder_->texts[0].flags, test.itemState == ODS_NOACCEL ? kFlags | DT_HIDEPREFIX : kFlags);
    EXPECT_EQ(recorder_->texts[0].rect.right, 60);
    EXPECT_EQ(recorder_->texts[0].dc, dc_);
  }
}

TEST_F(MenuBarTest, IsTheSystemsOwnOnceLightIsAskedFor) {
  recorder_->asksForDark = false;
  DrawBar();
  DrawItem(0, 0);
  EXPECT_TRUE(recorder_->backgrounds.empty());
  recorder_->asksForDark = true;
  ::SendMessageW(dialog_.Window(), WM_THEMECHANGED, 0, 0);
  DrawItem(0, 0);
  EXPECT_EQ(recorder_->backgrounds.size(), 1u);
}

TEST(DarkScrollBar, OpensTheThemedBarForThePlainOne) {
  HWND window = reinterpret_cast<HWND>(INT_PTR{0x1234});
  for (const bool dark : {true, false}) {
    const ThemeRecorder recorder(19045, dark);
    DarkScrollBarThemeHook(window, L"ScrollBar");
    EXPECT_EQ(recorder->openedFor, dark ? nullptr : window);
    DarkScrollBarThemeHook(window, L"scrollbar");
    EXPECT_EQ(recorder->openedFor, window);
    DarkScrollBarThemeHook(window, L"ListView");
    EXPECT_EQ(recorder->openedClasses,
              (std::vector<std::wstring>{dark ? L"Explorer::ScrollBar" : L"ScrollBar", L"scrollbar", L"ListView"}));
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
                         // What the recorder has noted is the test's own memory.
                         recorder->allowed.clear();
                         recorder->themed.clear();
                         recorder->openedClasses.clear();
                         recorder->composed.clear();
                       }),
            LeakCount{});
}

}  // namespace
