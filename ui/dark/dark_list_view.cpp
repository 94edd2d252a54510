#include "ui/dark/dark_list_view.h"

#include <commctrl.h>
#include <uxtheme.h>

#include <memory>

#include "platform/handles.h"
#include "ui/dark/dark_mode.h"
#include "ui/dark/dark_mode_entry_points.h"

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

/// True when the drawing stage is answered with `result`.
bool OnHeaderDraw(const NMCUSTOMDRAW& draw, COLORREF headerText, LRESULT& result) {
  switch (draw.dwDrawStage) {
    case CDDS_PREPAINT:
      result = CDRF_NOTIFYITEMDRAW;
      return true;
    case CDDS_ITEMPREPAINT:
      if (DrawsDarkHeader()) ::SetTextColor(draw.hdc, headerText);
      result = CDRF_DODEFAULT;
      return true;
    default:
      return false;
  }
}

LRESULT CALLBACK DarkListViewSubclassProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                          DWORD_PTR reference) noexcept {
  auto* headerText = reinterpret_cast<COLORREF*>(reference);
  switch (message) {
    case WM_NOTIFY: {
      LRESULT result = 0;
      const bool isDraw = reinterpret_cast<const NMHDR*>(lParam)->code == NM_CUSTOMDRAW;
      if (isDraw && OnHeaderDraw(*reinterpret_cast<const NMCUSTOMDRAW*>(lParam), *headerText, result)) return result;
      break;
    }
    case WM_CTLCOLOREDIT:
      // The box over a cell is the list's child.
      if (!DarkModeOn()) break;
      ::SetTextColor(reinterpret_cast<HDC>(wParam), kDarkText);
      ::SetBkColor(reinterpret_cast<HDC>(wParam), kDarkBackground);
      ::SetDCBrushColor(reinterpret_cast<HDC>(wParam), kDarkBackground);
      return reinterpret_cast<LRESULT>(::GetStockObject(DC_BRUSH));
    case WM_THEMECHANGED:
      OnThemeChanged(list, *headerText, wParam, lParam);
      break;
    case WM_DESTROY:
      ::RemoveWindowSubclass(list, &DarkListViewSubclassProc, id);
      std::unique_ptr<COLORREF>(headerText).reset();
      break;
    default:
      break;
  }
  return ::DefSubclassProc(list, message, wParam, lParam);
}

void SetDarkColors(HWND list) {
  ::SendMessageW(list, LVM_SETBKCOLOR, 0, static_cast<LPARAM>(kDarkBackground));
  ::SendMessageW(list, LVM_SETTEXTBKCOLOR, 0, static_cast<LPARAM>(kDarkBackground));
  ::SendMessageW(list, LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(kDarkText));
}

}  // namespace

void ApplyDarkModeToListView(HWND list) {
  if (!DarkModeAvailable()) return;
  HWND header = HeaderOf(list);
  auto headerText = std::make_unique<COLORREF>(0);
  if (!::SetWindowSubclass(list, &DarkListViewSubclassProc, kListSubclass, reinterpret_cast<DWORD_PTR>(headerText.get()))) return;
  headerText.release();  // the subclass frees it at WM_DESTROY
  ::SendMessageW(list, WM_CHANGEUISTATE, MAKEWPARAM(UIS_SET, UISF_HIDEFOCUS), 0);
  Theme().setWindowTheme(header, L"ItemsView", nullptr);
  Theme().setWindowTheme(list, L"ItemsView", nullptr);
  if (DarkModeOn()) SetDarkColors(list);
}
