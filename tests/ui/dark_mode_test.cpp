#include "ui/dark_mode.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <uxtheme.h>

#include <algorithm>
#include <optional>

#include "res/resource.h"
#include "tests/ui/theme_recorder.h"
#include "ui/dark_menu_bar.h"
#include "ui/dark_scroll_bar.h"

namespace {

/// One of the program's dialogs, without the program's code behind it.
class TestDialog {
 public:
  explicit TestDialog(WORD templateId = IDD_RULE_EDITOR)
      : window_(::CreateDialogParamW(
            ::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(templateId), nullptr,
            [](HWND, UINT message, WPARAM, LPARAM) -> INT_PTR { return message == WM_INITDIALOG; }, 0)) {}
  ~TestDialog() { ::DestroyWindow(window_); }
  TestDialog(const TestDialog&) = delete;
  TestDialog& operator=(const TestDialog&) = delete;
  [[nodiscard]] HWND Window() const { return window_; }
  [[nodiscard]] HWND Item(int id) const { return ::GetDlgItem(window_, id); }
  [[nodiscard]] HWND Add(const wchar_t* className, DWORD style, int id) const {
    return ::CreateWindowExW(0, className, L"x", WS_CHILD | style, 0, 0, 20, 20, window_,
                             reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
  }

 private:
  HWND window_;
};

/// A device context in memory.
struct MemoryDc {
  MemoryDc() : dc(::CreateCompatibleDC(nullptr)) {}
  ~MemoryDc() { ::DeleteDC(dc); }
  MemoryDc(const MemoryDc&) = delete;
  MemoryDc& operator=(const MemoryDc&) = delete;
  HDC dc;
};

TEST(DarkMode, IsAvailableWithEveryRequiredEntry) {
  const struct {
    const char* name;
    unsigned build;
    void (*takeAway)(ThemeEntryPoints&);
    bool available;
  } cases[] = {
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
  const ThemeRecorder recorder;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ThemeEntryPoints entries = ThemeRecorder::EntryPoints();
    c.takeAway(entries);
    ThemeRecorder::notes = {};
    SetThemeEntryPointsForTest(entries, c.build);
    EXPECT_EQ(DarkModeAvailable(), c.available);
    EXPECT_EQ(DarkModeOn(), c.available);
    EXPECT_EQ(recorder->applicationModes, c.available && c.build >= 18362 ? 1 : 0);
    EXPECT_EQ(recorder->applicationAllowances, c.available && c.build < 18362 ? 1 : 0);
    EXPECT_EQ(recorder->colorRefreshes, c.available ? 1 : 0);
  }
}

TEST(DarkMode, IsDecidedAtStartButTitleBarsFollowWhatIsAskedForNow) {
  const TestDialog dialog;
  for (const unsigned build : {17763u, 18361u, 18362u, 22000u}) {
    for (int bits = 0; bits < 8; ++bits) {
      SCOPED_TRACE(testing::Message() << build << ", " << bits);
      const bool asks = (bits & 2) != 0;
      const bool contrast = (bits & 4) != 0;
      const ThemeRecorder recorder(build, !asks, !contrast);
      EXPECT_TRUE(DarkModeAvailable());
      EXPECT_EQ(DarkModeOn(), !asks && contrast);
      recorder->allowedForWindow = (bits & 1) != 0;
      recorder->asksForDark = asks;
      recorder->highContrast = contrast;
      RefreshTitleBarTheme(dialog.Window());
      const int dark = bits == 3 ? 1 : 0;
      if (build < 18362) {
        EXPECT_EQ(::GetPropW(dialog.Window(), L"UseImmersiveDarkModeColors"), reinterpret_cast<HANDLE>(INT_PTR{dark}));
        EXPECT_TRUE(recorder->composed.empty());
      } else {
        EXPECT_EQ(recorder->composed, std::vector<int>{dark});
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
  const MemoryDc memory;
  const LRESULT brush = ::SendMessageW(dialog, message, reinterpret_cast<WPARAM>(memory.dc), 0);
  ColorAnswer answer{::GetTextColor(memory.dc), ::GetBkColor(memory.dc), std::nullopt};
  LOGBRUSH description{};
  if (brush != 0 && ::GetObjectW(reinterpret_cast<HBRUSH>(brush), sizeof(description), &description) != 0) {
    answer.brush = description.lbColor;
  }
  return answer;
}

TEST(DarkDialog, AnswersEveryColourQuestion) {
  const ThemeRecorder recorder;
  const TestDialog dialog;
  HWND link = dialog.Add(WC_LINK, 0, 3000);
  ASSERT_NE(link, nullptr);
  ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x203040, {});
  // Some systems' link control deletes the brush that it is given. The dialog must not lose its own by that.
  const MemoryDc memory;
  for (UINT message = WM_CTLCOLORMSGBOX; message <= WM_CTLCOLORSTATIC; ++message) {
    const LRESULT lent =
        ::SendMessageW(dialog.Window(), message, reinterpret_cast<WPARAM>(memory.dc), reinterpret_cast<LPARAM>(link));
    EXPECT_EQ(::GetObjectType(reinterpret_cast<HGDIOBJ>(lent)), DWORD{OBJ_BRUSH});
    EXPECT_EQ(::GetDCBrushColor(memory.dc), 0x203040u);
    ::DeleteObject(reinterpret_cast<HGDIOBJ>(lent));

    const ColorAnswer answer = AskColors(dialog.Window(), message);
    EXPECT_EQ(answer.text, 0xE0E0E0u) << message;
    EXPECT_EQ(answer.background, 0x203040u) << message;
    EXPECT_EQ(answer.brush, COLORREF{0x203040}) << message;
  }
}

TEST(DarkDialog, LeavesColoursAloneWhenOffOrUnavailable) {
  for (const bool available : {true, false}) {
    const ThemeRecorder recorder(19045, false);
    if (!available) SetThemeEntryPointsForTest({}, 19045);
    ThemeRecorder::notes = {};
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
    for (const auto& [window, allowed] : recorder->allowed) EXPECT_FALSE(allowed);
  }
}

TEST(DarkDialog, GivesEveryKindOfControlItsTheme) {
  struct Setting {
    const char* name;
    unsigned build;
    bool dark;
    bool listed;
    DWORD extraStyle;
  };
  constexpr Setting kSettings[] = {{"listed, while dark mode is off", 19045, false, true, 0},
                                   {"not listed, while dark mode is off", 19045, false, false, 0},
                                   {"any child", 19045, true, false, 0},
                                   {"a disabled child", 19045, true, false, WS_DISABLED},
                                   {"any child on a newer build", 22000, true, false, 0}};
  const struct {
    const wchar_t* className;
    DWORD style;
    std::string_view themes;  // in each setting: E the Explorer theme, n none, - never touched
  } controls[] = {
      {L"Button", BS_PUSHBUTTON, "E-EEE"},
      {L"BUTTON", BS_DEFPUSHBUTTON, "E-EEE"},
      {L"Button", BS_CHECKBOX, "n-nEE"},
      {L"Button", BS_AUTOCHECKBOX, "n-nEE"},
      {L"Button", BS_RADIOBUTTON, "n-nnn"},
      {L"Button", BS_3STATE, "n-nnn"},
      {L"Button", BS_AUTO3STATE, "n-nEE"},
      {L"Button", BS_GROUPBOX, "n-nnn"},
      {L"Button", BS_AUTORADIOBUTTON, "n-nnn"},
      {L"ComboBox", CBS_DROPDOWNLIST, "n-nnn"},
      {L"Edit", 0, "n----"},
      {L"Static", 0, "n----"},
  };
  constexpr int kId = 3000;
  for (const auto& control : controls) {
    for (std::size_t i = 0; i < std::size(kSettings); ++i) {
      const Setting& setting = kSettings[i];
      SCOPED_TRACE(testing::Message() << "style " << control.style << " of a "
                                      << testing::PrintToString(std::wstring(control.className)) << ", " << setting.name);
      const ThemeRecorder recorder(setting.build, setting.dark);
      const TestDialog dialog(IDD_EXCLUSIONS);
      HWND window = dialog.Add(control.className, control.style | setting.extraStyle, kId);
      const int ids[] = {setting.listed ? kId : 3001};
      ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x202020, ids);
      const char theme = control.themes[i];
      EXPECT_EQ(recorder->ThemeOf(window), theme == 'E' ? L"Explorer" : theme == 'n' ? L"" : L"-");
      EXPECT_EQ(std::count(recorder->allowed.begin(), recorder->allowed.end(), std::pair(window, setting.dark)),
                (setting.listed ? 1 : 0) + (setting.dark ? 1 : 0));
    }
  }
}

TEST(DarkDialog, RefreshesBySettingChange) {
  const struct {
    const wchar_t* setting;
    bool colors;
  } cases[] = {{L"ImmersiveColorSet", true}, {L"IMMERSIVECOLORSET", true}, {L"ImmersiveColorSets", false}, {nullptr, false}};
  for (const bool hasContrastEntry : {true, false}) {
    for (const auto& c : cases) {
      const ThemeRecorder recorder;
      ThemeEntryPoints entries = ThemeRecorder::EntryPoints();
      if (!hasContrastEntry) entries.refreshHighContrast = nullptr;
      SetThemeEntryPointsForTest(entries, 19045);
      const TestDialog dialog;
      const int ids[] = {IDOK};
      ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x202020, ids);
      ThemeRecorder::notes = {};
      ::SendMessageW(dialog.Window(), WM_SETTINGCHANGE, 0, reinterpret_cast<LPARAM>(c.setting));
      EXPECT_EQ(recorder->colorRefreshes, c.colors ? 1 : 0);
      EXPECT_EQ(recorder->contrastRefreshes, hasContrastEntry ? 1 : 0);
      EXPECT_EQ(recorder->composed.size(), c.colors ? 1u : 0u);
      EXPECT_EQ(recorder->ThemeOf(dialog.Item(IDOK)), c.colors ? L"Explorer" : L"-");
    }
  }
}

/// The alert log's list, whose header is drawn by asking it as the header does.
class DarkListViewTest : public testing::Test {
 protected:
  static constexpr COLORREF kUntouched = 0x123456;

  /// The text colour of one drawing stage.
  COLORREF DrawHeader(DWORD stage, LRESULT expectedAnswer) const {
    const MemoryDc memory;
    ::SetTextColor(memory.dc, kUntouched);
    NMCUSTOMDRAW draw{};
    draw.hdr = {header_, 0, NM_CUSTOMDRAW};
    draw.dwDrawStage = stage;
    draw.hdc = memory.dc;
    EXPECT_EQ(::SendMessageW(list_, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&draw)), expectedAnswer);
    return ::GetTextColor(memory.dc);
  }
  COLORREF DrawHeaderItem() const { return DrawHeader(CDDS_ITEMPREPAINT, CDRF_DODEFAULT); }

  TestDialog dialog_{IDD_ALERT_LOG};
  HWND list_ = dialog_.Item(IDC_ALERT_LIST);
  HWND header_ = reinterpret_cast<HWND>(::SendMessageW(list_, LVM_GETHEADER, 0, 0));
};

TEST_F(DarkListViewTest, DrawsItsHeaderInTheThemesColour) {
  ASSERT_TRUE(::IsThemeActive()) << "this system has no theme to show the colour with";
  const ThemeRecorder recorder;
  ApplyDarkModeToListView(list_);
  EXPECT_EQ(recorder->ThemeOf(list_), L"ItemsView");
  EXPECT_EQ(recorder->ThemeOf(header_), L"ItemsView");
  EXPECT_EQ(DrawHeader(CDDS_PREPAINT, CDRF_NOTIFYITEMDRAW), kUntouched);
  EXPECT_EQ(DrawHeaderItem(), 0u);  // no theme change yet: the cell as it was made

  recorder->allowed.clear();
  ::SendMessageW(list_, WM_THEMECHANGED, 0, 0);
  EXPECT_EQ(recorder->allowed, (std::vector<std::pair<HWND, bool>>{{list_, true}, {header_, true}}));
  COLORREF expected = 0xE0E0E0;
  if (HTHEME theme = ::OpenThemeData(header_, L"Header")) {
    ::GetThemeColor(theme, 1, 0, 3803, &expected);
    ::CloseThemeData(theme);
  }
  EXPECT_EQ(DrawHeaderItem(), expected);
}

TEST_F(DarkListViewTest, LightHeaderStaysUnlessTheSystemAsksNow) {
  const ThemeRecorder recorder(19045, false);
  ApplyDarkModeToListView(list_);
  EXPECT_NE(::SendMessageW(list_, LVM_GETTEXTCOLOR, 0, 0), 0xE0E0E0);
  EXPECT_EQ(DrawHeaderItem(), kUntouched);
  recorder->asksForDark = recorder->highContrast = true;
  EXPECT_EQ(DrawHeaderItem(), kUntouched);
  recorder->highContrast = false;
  EXPECT_EQ(DrawHeaderItem(), 0u);
}

/// The main window's resource with its menu, and a memory context to draw into.
class MenuBarTest : public testing::Test {
 protected:
  MenuBarTest() {
    ::SetMenu(dialog_.Window(), menu_);
    ApplyDarkModeToDialog(dialog_.Window(), 0xE0E0E0, 0x202020, {}, DarkMenuBar::kDraw);
  }
  LRESULT DrawBar() const {
    MenuBarDraw draw{menu_, memory_.dc, 0};
    return ::SendMessageW(dialog_.Window(), kDrawMenuBar, 0, reinterpret_cast<LPARAM>(&draw));
  }
  LRESULT DrawItem(UINT state) const {
    MenuBarItemDraw draw{};
    draw.item.itemState = state;
    draw.item.rcItem = {10, 20, 60, 40};
    draw.bar = {menu_, memory_.dc, 0};
    draw.position = 1;
    return ::SendMessageW(dialog_.Window(), kDrawMenuBarItem, 0, reinterpret_cast<LPARAM>(&draw));
  }

  ThemeRecorder recorder_;
  TestDialog dialog_{IDD_MAIN};
  HMENU menu_ = ::LoadMenuW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_MAIN_MENU));
  MemoryDc memory_;
};

TEST_F(MenuBarTest, DrawsTheBarOnePixelHigherThanItIsAndOnlyWhileDarkIsAskedFor) {
  EXPECT_EQ(DrawBar(), 0);
  MENUBARINFO info{};
  info.cbSize = sizeof(info);
  RECT window{};
  ASSERT_TRUE(::GetMenuBarInfo(dialog_.Window(), OBJID_MENU, 0, &info) && ::GetWindowRect(dialog_.Window(), &window));
  RECT expected = info.rcBar;
  ::OffsetRect(&expected, -window.left, -window.top);
  expected.top -= 1;
  ASSERT_EQ(recorder_->backgrounds.size(), 1u);
  const auto& drawn = recorder_->backgrounds[0];
  EXPECT_TRUE(drawn.dc == memory_.dc && drawn.part == 14 && drawn.state == 1);
  EXPECT_TRUE(::EqualRect(&drawn.rect, &expected));

  recorder_->asksForDark = false;
  DrawBar();
  DrawItem(0);
  EXPECT_EQ(recorder_->backgrounds.size(), 1u);
  recorder_->asksForDark = true;
  ::SendMessageW(dialog_.Window(), WM_THEMECHANGED, 0, 0);
  DrawItem(0);
  EXPECT_EQ(recorder_->backgrounds.size(), 2u);
}

TEST_F(MenuBarTest, DrawsEachItemInItsState) {
  const struct {
    UINT itemState;
    int state;
  } cases[] = {{0, 0},
               {ODS_GRAYED, 3},
               {ODS_DISABLED | ODS_SELECTED, 3},
               {ODS_SELECTED, 2},
               {ODS_HOTLIGHT | ODS_INACTIVE, 2},
               {ODS_DEFAULT, 1},
               {ODS_INACTIVE, 1},
               {ODS_NOACCEL, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.itemState);
    recorder_->backgrounds.clear();
    recorder_->texts.clear();
    EXPECT_EQ(DrawItem(c.itemState), 0);
    ASSERT_TRUE(recorder_->backgrounds.size() == 1 && recorder_->texts.size() == 1);
    const auto& text = recorder_->texts[0];
    EXPECT_EQ(recorder_->backgrounds[0].state, c.state);
    EXPECT_EQ(text.state, c.state);
    EXPECT_EQ(text.text, L"&Rules");
    EXPECT_EQ(text.flags, DT_CENTER | DT_VCENTER | DT_SINGLELINE | (c.itemState == ODS_NOACCEL ? DT_HIDEPREFIX : 0u));
    EXPECT_TRUE(text.part == 14 && text.rect.right == 60 && text.dc == memory_.dc);
  }
}

TEST(DarkScrollBar, OpensTheThemedBarForThePlainOne) {
  HWND window = reinterpret_cast<HWND>(INT_PTR{0x1234});
  for (const bool dark : {true, false}) {
    const ThemeRecorder recorder(19045, dark);
    DarkScrollBarThemeHook(window, L"ScrollBar");
    EXPECT_EQ(recorder->openedFor, dark ? nullptr : window);
    DarkScrollBarThemeHook(window, L"scrollbar");
    EXPECT_EQ(recorder->openedFor, window);
    EXPECT_EQ(recorder->openedClasses, (std::vector<std::wstring>{dark ? L"Explorer::ScrollBar" : L"ScrollBar", L"scrollbar"}));
  }
}

}  // namespace
