#include "app/tray_menu.h"

#include "res/resource.h"

bool TrayMenu::Load(HINSTANCE instance) {
  resource_.reset(::LoadMenuW(instance, MAKEINTRESOURCEW(IDR_TRAY_MENU)));
  menu_ = resource_ ? ::GetSubMenu(resource_.get(), 0) : nullptr;
  // Bold: what a click on the icon does.
  if (menu_ != nullptr) ::SetMenuDefaultItem(menu_, IDM_TRAY_OPEN, FALSE);
  return menu_ != nullptr;
}

UINT TrayMenu::Choose(HWND owner, bool paused) {
  if (menu_ == nullptr) return 0;
  const auto state = [](bool enabled) -> UINT { return enabled ? MF_ENABLED : MF_DISABLED | MF_GRAYED; };
  ::EnableMenuItem(menu_, IDM_TRAY_PAUSE, MF_BYCOMMAND | state(!paused));
  ::EnableMenuItem(menu_, IDM_TRAY_RESUME, MF_BYCOMMAND | state(paused));

  // Without the foreground, and without the message after it, the menu would not close when the user clicks elsewhere.
  ::SetForegroundWindow(owner);
  POINT cursor{};
  ::GetCursorPos(&cursor);
  const UINT side = ::GetSystemMetrics(SM_MENUDROPALIGNMENT) != 0 ? TPM_RIGHTALIGN : TPM_LEFTALIGN;
  const auto command =
      static_cast<UINT>(::TrackPopupMenuEx(menu_, side | TPM_RIGHTBUTTON | TPM_RETURNCMD, cursor.x, cursor.y, owner, nullptr));
  ::SendMessageW(owner, WM_NULL, 0, 0);
  return command;
}
