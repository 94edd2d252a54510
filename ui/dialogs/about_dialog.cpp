#include "ui/dialogs/about_dialog.h"

#include <shellapi.h>

#include "platform/handles.h"
#include "product_config.h"
#include "res/resource.h"
#include "ui/dark/dark_mode.h"
#include "ui/framework/dialog.h"
#include "ui/framework/resources.h"
#include "ui/program.h"
#include "update/version.h"

namespace {

// The template shows the same text in the link.
constexpr wchar_t kProductPage[] = L"" VANTORA_PRODUCT_PAGE;

// Not the system's own link colour, which some themes make as pale as the dialog.
constexpr COLORREF kLinkColor = RGB(0, 102, 204);

constexpr int kDarkControls[] = {IDC_ABOUT_NAME, IDC_ABOUT_VERSION, IDC_ABOUT_LINK, IDOK};

void OpenInBrowser(HWND owner, const wchar_t* address) {
  ::ShellExecuteW(owner, L"open", address, nullptr, nullptr, SW_SHOWNORMAL);
}

HFONT MakeTitleFont(HFONT plain) {
  LOGFONTW font{};
  if (::GetObjectW(plain, sizeof font, &font) == 0) return nullptr;
  font.lfWeight = FW_BOLD;
  font.lfHeight = font.lfHeight * 3 / 2;
  return ::CreateFontIndirectW(&font);
}

/// One font for the process, made when the first box opens and never deleted: boxes come and go, and every one shows the same
/// title.
HFONT TitleFont(HFONT plain) {
  static const HFONT font = MakeTitleFont(plain);
  return font;
}

class AboutDialog final : public Dialog {
 public:
  AboutDialog(Program& program, const PageOpener& openPage) : Dialog(program.instance, IDD_ABOUT), openPage_(openPage) {}

 private:
  bool OnInitDialog() override;
  bool OnCommand(WORD id, WORD notification) override;
  std::optional<INT_PTR> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

  void ShowIcon();
  void ShowTitle();

  const PageOpener& openPage_;
  UniqueIcon icon_;
};

bool AboutDialog::OnInitDialog() {
  ShowIcon();
  SetItemText(IDC_ABOUT_VERSION, FormatResString(IDS_VERSION, AppVersionDisplay));
  ShowTitle();
  ApplyDarkMode(kDarkControls);
  return true;
}

void AboutDialog::ShowIcon() {
  const int size = ScaleForDpi(48);
  icon_.reset(
      static_cast<HICON>(::LoadImageW(Instance(), MAKEINTRESOURCEW(IDI_VANTORA), IMAGE_ICON, size, size, LR_DEFAULTCOLOR)));
  HWND control = Item(IDC_ABOUT_ICON);
  if (icon_ && control != nullptr) ::SendMessageW(control, STM_SETICON, reinterpret_cast<WPARAM>(icon_.get()), 0);
}

void AboutDialog::ShowTitle() {
  HWND name = Item(IDC_ABOUT_NAME);
  if (name == nullptr) return;
  HFONT font = TitleFont(reinterpret_cast<HFONT>(::SendMessageW(name, WM_GETFONT, 0, 0)));
  if (font != nullptr) ::SendMessageW(name, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
}

bool AboutDialog::OnCommand(WORD id, WORD notification) {
  if (id != IDC_ABOUT_LINK) return Dialog::OnCommand(id, notification);
  if (notification != STN_CLICKED) return false;
  openPage_(Window(), kProductPage);
  return true;
}

std::optional<INT_PTR> AboutDialog::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_SETCURSOR && reinterpret_cast<HWND>(wParam) == Item(IDC_ABOUT_LINK)) {
    ::SetCursor(::LoadCursorW(nullptr, IDC_HAND));
    return Reply(TRUE);
  }
  // In dark mode the dark dialog has answered with a colour of its own.
  if (message == WM_CTLCOLORSTATIC && reinterpret_cast<HWND>(lParam) == Item(IDC_ABOUT_LINK) && !DarkModeOn()) {
    auto* dc = reinterpret_cast<HDC>(wParam);
    ::SetTextColor(dc, IsHighContrast() ? ::GetSysColor(COLOR_HOTLIGHT) : kLinkColor);
    ::SetBkColor(dc, ::GetSysColor(COLOR_3DFACE));
    return reinterpret_cast<INT_PTR>(::GetSysColorBrush(COLOR_3DFACE));
  }
  return std::nullopt;
}

}  // namespace

void RunAboutDialog(HWND owner, Program& program) { RunAboutDialog(owner, program, &OpenInBrowser); }

void RunAboutDialog(HWND owner, Program& program, const PageOpener& openPage) { AboutDialog(program, openPage).RunModal(owner); }
