#include "ui/main_window/version_link.h"

#include "platform/thread.h"
#include "res/messages.h"
#include "res/resource.h"
#include "ui/dialogs/update_installation.h"
#include "ui/framework/resources.h"
#include "update/version.h"

std::wstring VersionLinkText(UpdateState& updates) {
  if (updates.IsUpdateKnown()) return FormatResString(IDS_LINK_UPDATE, updates.LatestVersion().c_str());
  return FormatResString(IDS_LINK_VERSION, AppVersionDisplay);
}

void VersionLink::OnInitDialog(HWND dialog) {
  dialog_ = dialog;
  Refresh();
}

void VersionLink::Refresh() const {
  const HWND link = ::GetDlgItem(dialog_, IDC_VERSION_LINK);
  if (link == nullptr) return;
  ::SetWindowTextW(link, VersionLinkText(program_.updates).c_str());
  ::ShowWindow(link, SW_SHOW);
}

void VersionLink::OnClick() {
  if (program_.updates.IsUpdateKnown()) {
    StartDetachedThread([&program = program_] { UpdateInstallThread(program); });
    return;
  }
  if (const HWND tray = program_.trayWindow) ::PostMessageW(tray, UWM_CHECK_FOR_UPDATES, 1, 0);
}
