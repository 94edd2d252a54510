#include "ui/dark/dark_list_view.h"

#include <uxtheme.h>

#include <memory>

#include "platform/handles.h"
#include "ui/dark/dark_mode.h"
#include "ui/dark/dark_mode_entry_points.h"
#include "ui/dark/subclass.h"

namespace {

constexpr UINT_PTR kListSubclass = 2;

using UniqueTheme = Unique<HTHEME, ::CloseThemeData>;

HWND HeaderOf(HWND list) { return reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETHEADER, 0, 0)); }

bool DrawsDarkHeader() { return (DarkModeOn() || (SystemAsksForDarkNow() && !IsHighContrast())) && ::IsThemeActive(); }

COLORREF HeaderTextColor(HWND list) {
  constexpr int kHeaderItem = 1;
  constexpr int kTextColor = 3803;
  auto color = static_cast<COLORREF>(::SendMessageW(list, LVM_GETTEXTCOLOR, 0, 0));
  const UniqueTheme theme(::OpenThemeData(HeaderOf(list), L"Header"));
  // Leaves the list's own colour when the theme names none.
  if (theme != nullptr) ::GetThemeColor(theme.get(), kHeaderItem, 0, kTextColor, &color);
  return color;
}

void OnThemeChanged(HWND list, COLORREF& headerText, WPARAM wParam, LPARAM lParam) {
  HWND header = HeaderOf(list);
  AllowDarkMode(list);
  AllowDarkMode(header);
  headerText = HeaderTextColor(list);
  ::SendMessageW(header, WM_THEMECHANGED, wParam, lParam);
  ::RedrawWindow(list, nullptr, nullptr, RDW_FRAME | RDW_INVALIDATE);
}

std::optional<LRESULT> OnHeaderDraw(const NMCUSTOMDRAW& draw, COLORREF headerText) {
  switch (draw.dwDrawStage) {
    case CDDS_PREPAINT:
      return CDRF_NOTIFYITEMDRAW;
    case CDDS_ITEMPREPAINT:
      if (DrawsDarkHeader()) ::SetTextColor(draw.hdc, headerText);
      return CDRF_DODEFAULT;
    default:
      return std::nullopt;
  }
}

class DarkListView final : public Subclass {
 public:
  std::optional<LRESULT> OnMessage(HWND list, UINT message, WPARAM wParam, LPARAM lParam) override {
    if (message == WM_THEMECHANGED) OnThemeChanged(list, headerText_, wParam, lParam);
    if (message == WM_NOTIFY && reinterpret_cast<const NMHDR*>(lParam)->code == NM_CUSTOMDRAW)
      return OnHeaderDraw(*reinterpret_cast<const NMCUSTOMDRAW*>(lParam), headerText_);
    // The box over a cell is the list's child.
    if (message != WM_CTLCOLOREDIT || !DarkModeOn()) return std::nullopt;
    ::SetTextColor(reinterpret_cast<HDC>(wParam), kDarkText);
    ::SetBkColor(reinterpret_cast<HDC>(wParam), kDarkBackground);
    ::SetDCBrushColor(reinterpret_cast<HDC>(wParam), kDarkBackground);
    return reinterpret_cast<LRESULT>(::GetStockObject(DC_BRUSH));
  }

 private:
  COLORREF headerText_ = 0;
};

void SetDarkColors(HWND list) {
  ::SendMessageW(list, LVM_SETBKCOLOR, 0, static_cast<LPARAM>(kDarkBackground));
  ::SendMessageW(list, LVM_SETTEXTBKCOLOR, 0, static_cast<LPARAM>(kDarkBackground));
  ::SendMessageW(list, LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(kDarkText));
}

}  // namespace

void ApplyDarkModeToListView(HWND list) {
  if (!DarkModeAvailable()) return;
  HWND header = HeaderOf(list);
  if (!InstallSubclass(list, kListSubclass, std::make_unique<DarkListView>())) return;
  ::SendMessageW(list, WM_CHANGEUISTATE, MAKEWPARAM(UIS_SET, UISF_HIDEFOCUS), 0);
  Theme().setWindowTheme(header, L"ItemsView", nullptr);
  Theme().setWindowTheme(list, L"ItemsView", nullptr);
  if (DarkModeOn()) SetDarkColors(list);
}
