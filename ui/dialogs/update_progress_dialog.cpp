#include "ui/dialogs/update_progress_dialog.h"

#include "res/resource.h"

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
