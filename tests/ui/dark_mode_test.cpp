#include "ui/dark/dark_mode.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <uxtheme.h>

#include <algorithm>
#include <array>

#include "platform/handles.h"
#include "res/resource.h"
#include "tests/support/theme_recorder.h"
#include "ui/dark/dark_dialog.h"
#include "ui/dark/dark_list_view.h"
#include "ui/dark/dark_menu_bar.h"
#include "ui/dark/dark_scroll_bar.h"

namespace {

/// One of the program's dialogs, without the program's code behind it.
struct TestDialog {
  explicit TestDialog(WORD templateId = IDD_RULE_EDITOR)
      : window(::CreateDialogParamW(
            ::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(templateId), nullptr,
            [](HWND, UINT message, WPARAM, LPARAM) -> INT_PTR { return message == WM_INITDIALOG; }, 0)) {}
  [[nodiscard]] HWND Window() const { return window.get(); }
  [[nodiscard]] HWND Item(int id) const { return ::GetDlgItem(Window(), id); }
  [[nodiscard]] HWND Add(const wchar_t* className, DWORD style) const {
    return ::CreateWindowExW(0, className, L"x", WS_CHILD | style, 0, 0, 20, 20, Window(),
                             reinterpret_cast<HMENU>(INT_PTR{kAddedId}), nullptr, nullptr);
  }

  static constexpr int kAddedId = 3000;
  Unique<HWND, ::DestroyWindow> window;
};

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
      EXPECT_EQ(recorder->applicationModes, build < 18362 ? 0 : 1);
      EXPECT_EQ(recorder->applicationAllowances, build < 18362 ? 1 : 0);
      EXPECT_EQ(recorder->colorRefreshes, 1);
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

/// Asks the dialog for a control's colours as the control does: text, background and the brush's colour.
std::array<COLORREF, 3> AskColors(HWND dialog, UINT message, HWND control = nullptr) {
  const WindowDc dc(nullptr);
  const auto brush = reinterpret_cast<HGDIOBJ>(
      ::SendMessageW(dialog, message, reinterpret_cast<WPARAM>(dc.Get()), reinterpret_cast<LPARAM>(control)));
  LOGBRUSH description{};
  ::GetObjectW(brush, sizeof(description), &description);
  if (brush == ::GetStockObject(DC_BRUSH)) description.lbColor = ::GetDCBrushColor(dc.Get());
  // Some systems' link control deletes the brush that it is given.
  if (control != nullptr) ::DeleteObject(brush);
  return {::GetTextColor(dc.Get()), ::GetBkColor(dc.Get()), description.lbColor};
}

TEST(DarkDialog, AnswersEveryColourQuestionAlsoAfterALinkHasDeletedItsBrush) {
  constexpr std::array<COLORREF, 3> kExpected = {0xE0E0E0, 0x203040, 0x203040};
  const ThemeRecorder recorder;
  const TestDialog dialog;
  HWND link = dialog.Add(WC_LINK, 0);
  ApplyDarkModeToDialog(dialog.Window(), kExpected[0], kExpected[1], {});
  for (UINT message = WM_CTLCOLORMSGBOX; message <= WM_CTLCOLORSTATIC; ++message) {
    for (HWND control : {HWND{nullptr}, link, link, HWND{nullptr}}) {
      EXPECT_EQ(AskColors(dialog.Window(), message, control), kExpected) << message;
    }
  }
  HWND clickable = dialog.Add(WC_STATICW, SS_NOTIFY);
  EXPECT_EQ(AskColors(dialog.Window(), WM_CTLCOLORSTATIC, clickable)[0], kDarkLink) << "text that opens a page";
}

TEST(DarkDialog, RefreshesBySettingChange) {
  const struct {
    const wchar_t* setting;
    bool hasContrastEntry;
    bool refreshesColors;
  } cases[] = {{L"ImmersiveColorSet", true, true},
               {L"IMMERSIVECOLORSET", false, true},
               {L"ImmersiveColorSets", true, false},
               {L"Environment", false, false},
               {nullptr, true, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    const ThemeRecorder recorder;
    ThemeEntryPoints entries = ThemeRecorder::EntryPoints();
    if (!c.hasContrastEntry) entries.refreshHighContrast = nullptr;
    SetThemeEntryPointsForTest(entries, 19045);
    const TestDialog dialog;
    const int ids[] = {IDOK};
    ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x202020, ids);
    ThemeRecorder::notes = {};
    ::SendMessageW(dialog.Window(), WM_SETTINGCHANGE, 0, reinterpret_cast<LPARAM>(c.setting));
    EXPECT_EQ(recorder->colorRefreshes, c.refreshesColors ? 1 : 0);
    EXPECT_EQ(recorder->contrastRefreshes, c.hasContrastEntry ? 1 : 0);
    EXPECT_EQ(recorder->composed.size(), c.refreshesColors ? 1u : 0u);
    EXPECT_EQ(recorder->ThemeOf(dialog.Item(IDOK)), c.refreshesColors ? L"Explorer" : L"-");
  }
}

/// The text colour in which the list has an item of its header drawn; 0x123456 where it leaves that alone.
COLORREF HeaderTextColor(HWND list) {
  const WindowDc dc(nullptr);
  ::SetTextColor(dc.Get(), 0x123456);
  NMCUSTOMDRAW draw{};
  draw.hdr.code = NM_CUSTOMDRAW;
  draw.hdc = dc.Get();
  for (const auto& [stage, answer] : {std::pair{CDDS_PREPAINT, CDRF_NOTIFYITEMDRAW}, {CDDS_ITEMPREPAINT, CDRF_DODEFAULT}}) {
    draw.dwDrawStage = static_cast<DWORD>(stage);
    EXPECT_EQ(::SendMessageW(list, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&draw)), answer);
  }
  return ::GetTextColor(dc.Get());
}

TEST(DarkListView, DrawsItsHeaderInTheThemesColourWhileDarkIsAskedFor) {
  ASSERT_TRUE(::IsThemeActive()) << "this system has no theme to show the colour with";
  for (const bool darkAtStart : {true, false}) {
    const ThemeRecorder recorder(19045, darkAtStart);
    const TestDialog dialog(IDD_ALERT_LOG);
    HWND list = dialog.Item(IDC_ALERT_LIST);
    HWND header = reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETHEADER, 0, 0));
    ApplyDarkModeToListView(list);
    EXPECT_EQ(recorder->ThemeOf(list), L"ItemsView");
    EXPECT_EQ(recorder->ThemeOf(header), L"ItemsView");
    EXPECT_EQ(::SendMessageW(list, LVM_GETTEXTCOLOR, 0, 0) == LRESULT{0xE0E0E0}, darkAtStart);
    EXPECT_EQ(HeaderTextColor(list), darkAtStart ? 0u : 0x123456u);  // no theme change yet: the cell as it was made
    recorder->asksForDark = recorder->highContrast = true;
    EXPECT_EQ(HeaderTextColor(list), darkAtStart ? 0u : 0x123456u);
    recorder->highContrast = false;
    EXPECT_EQ(HeaderTextColor(list), 0u);

    recorder->allowed.clear();
    ::SendMessageW(list, WM_THEMECHANGED, 0, 0);
    EXPECT_EQ(recorder->allowed, (std::vector<std::pair<HWND, bool>>{{list, darkAtStart}, {header, darkAtStart}}));
    auto expected = static_cast<COLORREF>(::SendMessageW(list, LVM_GETTEXTCOLOR, 0, 0));
    if (HTHEME theme = ::OpenThemeData(header, L"Header")) {
      ::GetThemeColor(theme, 1, 0, 3803, &expected);
      ::CloseThemeData(theme);
    }
    EXPECT_EQ(HeaderTextColor(list), expected);
  }
}

TEST(DarkMenuBar, IsDrawnWithItsItemsWhileDarkIsAskedFor) {
  const ThemeRecorder recorder;
  const TestDialog dialog(IDD_MAIN);
  HMENU menu = ::LoadMenuW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_MAIN_MENU));
  ::SetMenu(dialog.Window(), menu);
  ApplyDarkModeToDialog(dialog.Window(), 0xE0E0E0, 0x202020, {}, DarkMenuBar::kDraw);
  const WindowDc dc(nullptr);
  MenuBarDraw bar{menu, dc.Get(), 0};
  const auto drawItem = [&](UINT state) {
    MenuBarItemDraw item{{}, bar, 1};
    item.item.itemState = state;
    item.item.rcItem = {10, 20, 60, 40};
    EXPECT_EQ(::SendMessageW(dialog.Window(), kDrawMenuBarItem, 0, reinterpret_cast<LPARAM>(&item)), 0);
  };
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
    drawItem(c.itemState);
    const auto& text = recorder->texts.back();
    EXPECT_EQ(recorder->backgrounds.back().state, c.state);
    EXPECT_EQ(text.state, c.state);
    EXPECT_EQ(text.text, L"&Rules");
    EXPECT_EQ(text.flags, DT_CENTER | DT_VCENTER | DT_SINGLELINE | (c.itemState == ODS_NOACCEL ? DT_HIDEPREFIX : 0u));
    EXPECT_TRUE(text.part == 14 && text.rect.right == 60 && text.dc == dc.Get());
  }

  // The bar itself is drawn one pixel higher than it is.
  const auto drawBar = [&] { ::SendMessageW(dialog.Window(), kDrawMenuBar, 0, reinterpret_cast<LPARAM>(&bar)); };
  drawBar();
  MENUBARINFO info{};
  info.cbSize = sizeof(info);
  RECT window{};
  ASSERT_TRUE(::GetMenuBarInfo(dialog.Window(), OBJID_MENU, 0, &info) && ::GetWindowRect(dialog.Window(), &window));
  ::OffsetRect(&info.rcBar, -window.left, -window.top);
  info.rcBar.top -= 1;
  const auto& drawn = recorder->backgrounds.back();
  EXPECT_TRUE(drawn.dc == dc.Get() && drawn.part == 14 && drawn.state == 1);
  EXPECT_TRUE(::EqualRect(&drawn.rect, &info.rcBar));

  recorder->asksForDark = false;
  drawBar();
  drawItem(0);
  EXPECT_EQ(recorder->backgrounds.size(), std::size(cases) + 1);
  recorder->asksForDark = true;
  ::SendMessageW(dialog.Window(), WM_THEMECHANGED, 0, 0);
  drawItem(0);
  EXPECT_EQ(recorder->backgrounds.size(), std::size(cases) + 2);
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
