#include "ui/rules/rule_presets_menu.h"

#include "platform/handles.h"
#include "res/resource.h"
#include "storage/rule_presets.h"
#include "ui/framework/resources.h"

bool RunPresetsCommand(HWND dialog, RuleStore& rules) {
  UniqueMenu menu(::CreatePopupMenu());
  for (UINT index = 0; index < RulePresets().size(); ++index) {
    ::AppendMenuW(menu.get(), MF_STRING, IDM_PRESET_BROWSERS + index, LoadResString(IDS_PRESET_BROWSERS + index).c_str());
  }
  RECT button{};
  ::GetWindowRect(::GetDlgItem(dialog, IDC_PRESETS), &button);
  const BOOL chosen = ::TrackPopupMenu(menu.get(), TPM_RETURNCMD, button.left, button.bottom, 0, dialog, nullptr);
  menu.reset();
  const auto index = static_cast<UINT>(chosen) - IDM_PRESET_BROWSERS;
  if (index >= RulePresets().size()) return false;
  AddPresetRules(rules, RulePresets()[index]);
  return true;
}
