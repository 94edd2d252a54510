#include "ui/dialogs/update_progress_dialog.h"

#include "res/messages.h"
#include "res/resource.h"
#include "ui/framework/resources.h"
#include "ui/message_box/message_box.h"
#include "ui/windows_of_program.h"
#include "update/update_install.h"

namespace {

constexpr LPARAM kMarqueeStepMs = 30;
constexpr int kDarkControls[] = {IDC_UPDATE_STATUS, IDCANCEL};

}  // namespace

UpdateProgressDialog::UpdateProgressDialog(HINSTANCE instance) : Dialog(instance, IDD_UPDATE_PROGRESS) {}

UpdateProgressDialog::~UpdateProgressDialog() { Close(); }

void UpdateProgressDialog::Open() {
  if (!IsOpen() && CreateModeless(nullptr) != nullptr) ::ShowWindow(Window(), SW_SHOW);
}

void UpdateProgressDialog::Close() {
  if (IsOpen()) ::DestroyWindow(Window());
}

bool UpdateProgressDialog::OnInitDialog() {
  ::SendMessageW(Item(IDC_UPDATE_BAR), PBM_SETMARQUEE, TRUE, kMarqueeStepMs);
  ApplyDarkMode(kDarkControls);
  return true;
}

bool UpdateProgressDialog::OnCommand(WORD id, WORD) {
  if (id != IDCANCEL) return false;
  Close();
  return true;
}

void UpdateInstallThread(Program& program) {
  if (!program.updates.BeginInstallation()) return;
  if (DownloadAndInstallUpdate(program.settings)) {
    // The installation is still under way: its flag stays set, so that nothing starts another while the program ends.
    ::PostMessageW(program.trayWindow, UWM_TERMINATE, 0, 0);
    return;
  }
  program.updates.EndInstallation();
  XMessageBox(nullptr, LoadResString(IDS_UPDATE_FAILED).c_str(), LoadResString(IDS_UPDATE_ERROR_TITLE).c_str(),
              MB_ICONERROR | MB_SETFOREGROUND);
}
