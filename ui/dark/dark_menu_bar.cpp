#include "ui/dark/dark_menu_bar.h"

#include <uxtheme.h>

#include <iterator>

#include "platform/handles.h"
#include "ui/dark/dark_mode.h"
#include "ui/dark/dark_mode_entry_points.h"
#include "ui/dark/subclass.h"

namespace {

constexpr UINT_PTR kMenuBarSubclass = 2;
/// The popup item's part is the one that has a dark form for every state; the menu bar's own has none.
constexpr int kPart = 14;

using UniqueTheme = Unique<HTHEME, ::CloseThemeData>;

class MenuBar final : public Subclass {
 public:
  std::optional<LRESULT> OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  HTHEME Open(HWND window) {
    if (theme_ == nullptr) theme_.reset(::OpenThemeData(window, L"Menu"));
    return theme_.get();
  }

  UniqueTheme theme_;  ///< opened at the first painting and forgotten when the theme changes
};

bool DrawsDark() { return DarkModeOn() && SystemAsksForDarkNow(); }

void DrawBar(HWND window, HTHEME theme, const MenuBarDraw& bar) {
  MENUBARINFO info{};
  info.cbSize = sizeof(info);
  RECT frame{};
  if (!::GetMenuBarInfo(window, OBJID_MENU, 0, &info) || !::GetWindowRect(window, &frame)) return;
  RECT rect = info.rcBar;
  ::OffsetRect(&rect, -frame.left, -frame.top);
  rect.top -= 1;  // covers the line between title bar and menu bar
  Theme().drawBackground(theme, bar.dc, kPart, 1, &rect, nullptr);
}

int StateOf(UINT itemState) {
  if ((itemState & (ODS_GRAYED | ODS_DISABLED)) != 0) return 3;
  if ((itemState & (ODS_SELECTED | ODS_HOTLIGHT)) != 0) return 2;
  if ((itemState & (ODS_DEFAULT | ODS_INACTIVE)) != 0) return 1;
  return 0;
}

void DrawItem(HTHEME theme, const MenuBarItemDraw& draw) {
  wchar_t text[256] = L"";
  MENUITEMINFOW info{};
  info.cbSize = sizeof(info);
  info.fMask = MIIM_STRING;
  info.dwTypeData = text;
  info.cch = static_cast<UINT>(std::size(text));
  if (!::GetMenuItemInfoW(draw.bar.menu, static_cast<UINT>(draw.position), TRUE, &info)) info.cch = 0;

  const int state = StateOf(draw.item.itemState);
  DWORD flags = DT_CENTER | DT_VCENTER | DT_SINGLELINE;
  if ((draw.item.itemState & ODS_NOACCEL) != 0) flags |= DT_HIDEPREFIX;
  Theme().drawBackground(theme, draw.bar.dc, kPart, state, &draw.item.rcItem, nullptr);
  Theme().drawText(theme, draw.bar.dc, kPart, state, text, static_cast<int>(info.cch), flags, 0, &draw.item.rcItem);
}

std::optional<LRESULT> MenuBar::OnMessage(HWND window, UINT message, WPARAM, LPARAM lParam) {
  if (message == WM_THEMECHANGED) theme_.reset();
  if (message != kDrawMenuBar && message != kDrawMenuBarItem) return std::nullopt;
  HTHEME theme = DrawsDark() ? Open(window) : nullptr;
  if (theme == nullptr) return std::nullopt;
  if (message == kDrawMenuBar) {
    DrawBar(window, theme, *reinterpret_cast<const MenuBarDraw*>(lParam));
  } else {
    DrawItem(theme, *reinterpret_cast<const MenuBarItemDraw*>(lParam));
  }
  return 0;
}

}  // namespace

void InstallDarkMenuBar(HWND window) { (void)InstallSubclass(window, kMenuBarSubclass, std::make_unique<MenuBar>()); }
