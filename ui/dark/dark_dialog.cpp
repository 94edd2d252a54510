#include "ui/dark/dark_dialog.h"

#include <memory>
#include <string>
#include <vector>

#include "platform/handles.h"
#include "ui/dark/dark_menu_bar.h"
#include "ui/dark/dark_mode.h"
#include "ui/dark/dark_mode_entry_points.h"
#include "ui/dark/subclass.h"

namespace {

constexpr UINT_PTR kDialogSubclass = 1;

class DarkDialog final : public Subclass {
 public:
  DarkDialog(COLORREF text, COLORREF background, std::span<const int> controlIds)
      : text_(text), background_(background), controlIds_(controlIds.begin(), controlIds.end()) {}
  std::optional<LRESULT> OnMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  LRESULT AnswerColors(HDC dc, HWND control);
  void OnThemeChanged(HWND dialog) const;

  COLORREF text_;
  COLORREF background_;
  std::vector<int> controlIds_;
  UniqueBrush brush_;
};

bool IsOfClass(HWND window, const wchar_t* className) {
  wchar_t name[32];
  const int length = ::GetClassNameW(window, name, static_cast<int>(std::size(name)));
  return length > 0 && ::CompareStringOrdinal(name, length, className, -1, TRUE) == CSTR_EQUAL;
}

unsigned StyleOf(HWND window) { return static_cast<unsigned>(::GetWindowLongPtrW(window, GWL_STYLE)); }

void ThemeAsExplorer(HWND control) { Theme().setWindowTheme(control, L"Explorer", nullptr); }
/// Without visual styles a control draws in the colours that its parent answers.
void TakeThemeAway(HWND control) { Theme().setWindowTheme(control, L"", L""); }

void ThemeListedControl(HWND control) {
  AllowDarkMode(control);
  const unsigned type = StyleOf(control) & BS_TYPEMASK;
  if (IsOfClass(control, L"Button") && (type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON)) {
    ThemeAsExplorer(control);
  } else {
    TakeThemeAway(control);
  }
  ::SendMessageW(control, WM_THEMECHANGED, 0, 0);
}

/// Whether a button has a dark form in the Explorer theme; the others draw in the dialog's colours without a theme.
bool HasDarkForm(HWND button) {
  constexpr unsigned kFirstBuildWithDarkCheckBoxes = 22000;
  const unsigned style = StyleOf(button);
  const bool groupBox = (style & 7) == BS_GROUPBOX;
  const bool checkBox = !groupBox && (style & 2) != 0;
  // A disabled check box keeps the theme on older builds too: the classic one draws its text unreadably.
  if (checkBox)
    return (IsWindows10OrGreater() && GetWindowsBuildNumber() >= kFirstBuildWithDarkCheckBoxes) || !::IsWindowEnabled(button);
  const bool radioOrThreeState = (style & 4) != 0 || (style & 9) == 9;
  return !groupBox && !radioOrThreeState;
}

void ThemeButton(HWND button) {
  if (HasDarkForm(button)) {
    ThemeAsExplorer(button);
  } else {
    TakeThemeAway(button);
  }
}

BOOL CALLBACK ThemeChildControl(HWND child, LPARAM) noexcept {
  AllowDarkMode(child);
  if (IsOfClass(child, L"Button")) {
    ThemeButton(child);
  } else if (IsOfClass(child, L"ComboBox")) {
    TakeThemeAway(child);
  }
  return TRUE;
}

LRESULT DarkDialog::AnswerColors(HDC dc, HWND control) {
  // Text that can be clicked is a link, and is to look like one.
  const bool link = IsOfClass(control, WC_STATICW) && (StyleOf(control) & SS_NOTIFY) != 0;
  ::SetTextColor(dc, link ? kDarkLink : text_);
  ::SetBkColor(dc, background_);
  if (IsOfClass(control, WC_LINK)) {
    // Some systems' link control deletes the brush it is answered; a stock one survives that.
    ::SetDCBrushColor(dc, background_);
    return reinterpret_cast<LRESULT>(::GetStockObject(DC_BRUSH));
  }
  if (brush_ == nullptr) brush_.reset(::CreateSolidBrush(background_));
  return reinterpret_cast<LRESULT>(brush_.get());
}

void DarkDialog::OnThemeChanged(HWND dialog) const {
  AllowDarkMode(dialog);
  RefreshTitleBarTheme(dialog);
  for (const int id : controlIds_) {
    if (HWND control = ::GetDlgItem(dialog, id)) ThemeListedControl(control);
  }
  ::RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
}

void OnSettingChange(HWND dialog, const wchar_t* setting) {
  const bool colors = setting != nullptr && ::CompareStringOrdinal(setting, -1, L"ImmersiveColorSet", -1, TRUE) == CSTR_EQUAL;
  if (colors) Theme().refreshColorPolicy();
  if (Theme().refreshHighContrast != nullptr) Theme().refreshHighContrast(1);
  if (colors) ::SendMessageW(dialog, WM_THEMECHANGED, 0, 0);
}

std::optional<LRESULT> DarkDialog::OnMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CTLCOLORMSGBOX:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLORDLG:
    case WM_CTLCOLORSCROLLBAR:
    case WM_CTLCOLORSTATIC:
      if (DarkModeAvailable() && DarkModeOn()) return AnswerColors(reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam));
      break;
    case WM_THEMECHANGED:
      if (DarkModeAvailable()) OnThemeChanged(dialog);
      break;
    case WM_SETTINGCHANGE:
      if (DarkModeAvailable()) OnSettingChange(dialog, reinterpret_cast<const wchar_t*>(lParam));
      break;
    default:
      break;
  }
  return std::nullopt;
}

}  // namespace

void ApplyDarkModeToDialog(HWND dialog, COLORREF text, COLORREF background, std::span<const int> controlIds,
                           DarkMenuBar menuBar) {
  if (!DarkModeAvailable()) return;
  AllowDarkMode(dialog);
  RefreshTitleBarTheme(dialog);
  if (menuBar == DarkMenuBar::kDraw) InstallDarkMenuBar(dialog);
  if (!InstallSubclass(dialog, kDialogSubclass, std::make_unique<DarkDialog>(text, background, controlIds))) return;
  ::SendMessageW(dialog, WM_THEMECHANGED, 0, 0);
  if (DarkModeOn()) ::EnumChildWindows(dialog, &ThemeChildControl, 0);
}
