#include "ui/main_window/settings_page.h"

#include <iterator>
#include <string>

#include "storage/settings_registry.h"
#include "ui/framework/file_choosers.h"

namespace {

struct PathField {
  WORD controlId;
  std::wstring AppSettings::*path;
};

constexpr PathField kPathFields[] = {
    {IDC_LOG_PATH, &AppSettings::logFilePath},
    {IDC_SOUND_PATH, &AppSettings::soundFilePath},
};

/// What counts as a change of the page.
struct ChangeRow {
  WORD controlId;
  WORD notification;
};

constexpr ChangeRow kChanges[] = {
    {IDC_POLL_INTERVAL, EN_CHANGE}, {IDC_LOG_PATH, EN_CHANGE}, {IDC_SOUND_PATH, EN_CHANGE}, {IDC_THROTTLE, EN_CHANGE},
    {IDC_NOTIFY, BN_CLICKED},       {IDC_LOG, BN_CLICKED},     {IDC_SOUND, BN_CLICKED},
};

/// The field's number when it lies in the range; blank, rubbish and anything else leave `value` as it was and are false.
bool ReadNumber(HWND dialog, int controlId, std::uint32_t lowest, std::uint32_t highest, std::uint32_t& value) {
  const UINT number = ::GetDlgItemInt(dialog, controlId, nullptr, FALSE);
  if (number < lowest || number > highest) return false;
  value = number;
  return true;
}

std::wstring ReadPath(HWND dialog, int controlId) {
  wchar_t text[kMaxPathChars + 1];
  const UINT length = ::GetDlgItemTextW(dialog, controlId, text, static_cast<int>(std::size(text)));
  return std::wstring(text, length);
}

std::uint32_t ReadActions(HWND dialog) {
  std::uint32_t actions = 0;
  for (const AlertActionRow& row : kAlertActionRows) {
    if (::IsDlgButtonChecked(dialog, row.checkBox) == BST_CHECKED) actions |= row.action;
  }
  return actions;
}

}  // namespace

void SettingsPage::OnInitDialog(HWND dialog) {
  dialog_ = dialog;
  Fill();
  EnableApply(false);
}

void SettingsPage::Fill() {
  const AppSettings settings = program_.settings.Get();
  ::SetDlgItemInt(dialog_, IDC_POLL_INTERVAL, program_.engine.IntervalMs() / 1000, FALSE);
  ::SetDlgItemInt(dialog_, IDC_THROTTLE, settings.notificationThrottleSec, FALSE);
  for (const AlertActionRow& row : kAlertActionRows) ShowAction(row);
  for (const PathField& field : kPathFields) ::SetDlgItemTextW(dialog_, field.controlId, (settings.*field.path).c_str());
}

void SettingsPage::ShowAction(const AlertActionRow& row) {
  const bool on = (program_.settings.Get().alertActions & row.action) != 0;
  ::CheckDlgButton(dialog_, row.checkBox, on ? BST_CHECKED : BST_UNCHECKED);
}

bool SettingsPage::OnCommand(WORD id, WORD notification) {
  for (const ChangeRow& change : kChanges) {
    if (change.controlId == id && change.notification == notification) {
      EnableApply(true);
      return true;
    }
  }
  switch (id) {
    case IDC_APPLY:
      ApplySettingsPanel();
      return true;
    case IDC_LOG_BROWSE:
      ChoosePath(IDC_LOG_PATH, ChooseLogFilePath);
      return true;
    case IDC_SOUND_BROWSE:
      ChoosePath(IDC_SOUND_PATH, ChooseSoundFilePath);
      return true;
    default:
      return false;
  }
}

void SettingsPage::ApplySettingsPanel() {
  std::uint32_t pollIntervalSec = 0;
  if (ReadNumber(dialog_, IDC_POLL_INTERVAL, kMinPollIntervalSec, kMaxPollIntervalSec, pollIntervalSec)) {
    program_.engine.SetIntervalMs(pollIntervalSec * 1000);
  }
  AppSettings changed = program_.settings.Get();
  changed.alertActions = ReadActions(dialog_);
  ReadNumber(dialog_, IDC_THROTTLE, kMinThrottleSec, kMaxThrottleSec, changed.notificationThrottleSec);
  for (const PathField& field : kPathFields) changed.*field.path = ReadPath(dialog_, field.controlId);
  // Only what the page shows: the other fields may have changed on another thread meanwhile.
  program_.settings.Update([&changed](AppSettings& settings) {
    settings.alertActions = changed.alertActions;
    settings.notificationThrottleSec = changed.notificationThrottleSec;
    for (const PathField& field : kPathFields) settings.*field.path = changed.*field.path;
  });
  SaveSettings(program_.settings, program_.engine);
  EnableApply(false);
}

void SettingsPage::ChoosePath(WORD fieldId, bool (*choose)(HWND owner, std::wstring& path)) {
  std::wstring path = ReadPath(dialog_, fieldId);
  if (!choose(dialog_, path)) return;
  ::SetDlgItemTextW(dialog_, fieldId, path.c_str());
  EnableApply(true);
}

void SettingsPage::EnableApply(bool enabled) const {
  const HWND apply = ::GetDlgItem(dialog_, IDC_APPLY);
  if (apply == nullptr) return;
  // A disabled button that has the focus takes every key and does nothing with it.
  if (!enabled && ::GetFocus() == apply) ::SendMessageW(dialog_, WM_NEXTDLGCTL, 0, FALSE);
  ::EnableWindow(apply, enabled);
}
