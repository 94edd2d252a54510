#include "ui/main_window/version_link.h"

#include "platform/thread.h"
#include "res/messages.h"
#include "res/resource.h"
#include "ui/dialogs/update_installation.h"
#include "ui/framework/resources.h"
#include "update/version.h"

void VersionLink::OnInitDialog(HWND dialog) {
  dialog_ = dialog;
  if (IsUpdateKnown()) {
    SetText(IDS_LINK_UPDATE, program_.updates.LatestVersion());
  } else {
    SetText(IDS_LINK_VERSION, AppVersionDisplay);
  }
}

void VersionLink::ShowUpdate() { SetText(IDS_LINK_UPDATE, program_.updates.LatestVersion()); }

void VersionLink::OnClick() {
  if (IsUpdateKnown()) {
    StartDetachedThread([&program = program_] { UpdateInstallThread(program); });
    return;
  }
  if (const HWND tray = program_.trayWindow) ::PostMessageW(tray, UWM_CHECK_FOR_UPDATES, 1, 0);
}

bool VersionLink::IsUpdateKnown() const { return program_.updates.UpdateAvailableEvent.Wait(0) == WaitResult::kSignaled; }

void VersionLink::SetText(UINT formatId, const std::wstring& version) const {
  const HWND link = ::GetDlgItem(dialog_, IDC_VERSION_LINK);
  if (link == nullptr) return;
  ::SetWindowTextW(link, FormatResString(formatId, version.c_str()).c_str());
  ::ShowWindow(link, SW_SHOW);
}
