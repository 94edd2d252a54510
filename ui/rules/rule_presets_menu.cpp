#include "ui/rules/rule_presets_menu.h"

#include "platform/handles.h"
#include "res/resource.h"
#include "ui/framework/resources.h"
#include "ui/rules/rule_presets.h"

bool RunPresetsCommand(HWND dialog, RuleStore& rules) {
  UniqueMenu menu(::CreatePopupMenu());
  for (const RulePreset& preset : RulePresets()) {
    ::AppendMenuW(menu.get(), MF_STRING, preset.menuId, LoadResString(preset.labelStringId).c_str());
  }
  RECT button{};
  ::GetWindowRect(::GetDlgItem(dialog, IDC_PRESETS), &button);
  const BOOL chosen = ::TrackPopupMenu(menu.get(), TPM_RETURNCMD, button.left, button.bottom, 0, dialog, nullptr);
  menu.reset();
  return chosen != 0 && AddPresetRules(rules, static_cast<std::uint32_t>(chosen));
}
