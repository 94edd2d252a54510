#include "ui/rules/rule_list_commands.h"

#include <commctrl.h>

#include <algorithm>

#include "platform/handles.h"
#include "res/resource.h"
#include "storage/rule_presets.h"
#include "ui/framework/list_view.h"
#include "ui/framework/resources.h"
#include "ui/message_box/message_box.h"
#include "ui/rules/rule_editor.h"
#include "ui/rules/rule_exchange_commands.h"
#include "ui/rules/rule_list_model.h"

bool RuleListCommands::OnCommand(WORD id) {
  // Each button has a menu item that does the same.
  constexpr struct {
    WORD button;
    WORD menuItem;
    void (RuleListCommands::*run)();
  } kCommands[] = {
      {IDC_ADD_RULE, IDM_ADD_RULE, &RuleListCommands::OnAdd},
      {IDC_EDIT_RULE, IDM_EDIT_RULE, &RuleListCommands::OnEdit},
      {IDC_REMOVE_RULE, IDM_REMOVE_RULE, &RuleListCommands::OnRemove},
      {IDC_PRESETS, IDM_PRESETS, &RuleListCommands::OnPresets},
      {IDC_IMPORT_RULES, IDM_IMPORT_RULES, &RuleListCommands::OnImport},
      {IDC_EXPORT_RULES, IDM_EXPORT_RULES, &RuleListCommands::OnExport},
  };
  for (const auto& command : kCommands) {
    if (id != command.button && id != command.menuItem) continue;
    (this->*command.run)();
    return true;
  }
  return false;
}

void RuleListCommands::OnInitDialog(HWND dialog) {
  dialog_ = dialog;
  list_.OnInitDialog(dialog);
}

bool RuleListCommands::OnNotify(const NMHDR& header) {
  if (header.idFrom != IDC_RULE_LIST) return false;
  if (header.code == NM_DBLCLK) {
    const auto& click = reinterpret_cast<const NMITEMACTIVATE&>(header);
    OnDoubleClick(click.iItem, click.iSubItem);
    return true;
  }
  if (header.code == LVN_KEYDOWN && reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey == VK_DELETE) {
    OnRemove();
    return true;
  }
  return false;
}

void RuleListCommands::OnAdd() {
  // The id is used up even when the user cancels.
  ThresholdRule rule = MakeNewRule(program_.rules.TakeRuleId());
  if (!RunRuleEditor(program_.instance, dialog_, rule)) return;
  const std::size_t before = program_.rules.Snapshot()->size();
  program_.rules.Append({rule});
  list_.RefreshAdded(before);
}

void RuleListCommands::OnEdit() {
  const std::vector<std::uint32_t> selected = list_.SelectedRuleIds();
  if (selected.empty()) return;
  const RuleSnapshot rules = program_.rules.Snapshot();
  const auto rule = std::ranges::find(*rules, selected.front(), &ThresholdRule::ruleId);
  if (rule == rules->end()) return;
  ThresholdRule edited = *rule;
  if (!RunRuleEditor(program_.instance, dialog_, edited)) return;
  (void)program_.rules.Edit(edited.ruleId, [&edited](ThresholdRule& current) { current = edited; });
  Refresh();
}

void RuleListCommands::OnRemove() {
  const std::vector<std::uint32_t> selected = list_.SelectedRuleIds();
  if (selected.empty() || !ConfirmRemove(selected.size())) return;
  program_.rules.Remove(selected);
  Refresh();
}

bool RuleListCommands::ConfirmRemove(std::size_t count) const {
  const std::wstring question =
      count == 1 ? LoadResString(IDS_ASK_REMOVE_ONE) : FormatResString(IDS_ASK_REMOVE_MANY, static_cast<int>(count));
  const std::wstring title = LoadResString(IDS_CONFIRM_REMOVE_TITLE);
  return XMessageBox(dialog_, question.c_str(), title.c_str(), MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) == IDYES;
}

void RuleListCommands::OnPresets() {
  const UniqueMenu menu(::CreatePopupMenu());
  for (UINT index = 0; index < RulePresets().size(); ++index) {
    ::AppendMenuW(menu.get(), MF_STRING, IDM_PRESET_BROWSERS + index, LoadResString(IDS_PRESET_BROWSERS + index).c_str());
  }
  RECT button{};
  ::GetWindowRect(::GetDlgItem(dialog_, IDC_PRESETS), &button);
  const BOOL chosen = ::TrackPopupMenu(menu.get(), TPM_RETURNCMD, button.left, button.bottom, 0, dialog_, nullptr);
  const auto index = static_cast<UINT>(chosen) - IDM_PRESET_BROWSERS;
  if (index >= RulePresets().size()) return;  // dismissed
  const std::size_t before = program_.rules.Snapshot()->size();
  AddPresetRules(program_.rules, RulePresets()[index]);
  list_.RefreshAdded(before);
}

void RuleListCommands::OnImport() {
  const std::size_t before = program_.rules.Snapshot()->size();
  if (RunImportRulesCommand(dialog_, program_.rules)) list_.RefreshAdded(before);
}

void RuleListCommands::OnExport() { RunExportRulesCommand(dialog_, program_.rules); }

void RuleListCommands::OnDoubleClick(int row, int column) {
  if (row < 0) {
    OnAdd();
  } else if (column == kEnabledColumn) {
    ApplyCell(row, kEnabledColumn, {});
  } else if (IsRuleColumn(column)) {
    EndInPlaceEdit(true);  // a box over another cell commits before the next one opens
    inPlaceEdit_.Start(list_.Window(), row, column);
  }
}

void RuleListCommands::EndInPlaceEdit(bool commit) {
  const auto entry = commit ? inPlaceEdit_.Content() : std::nullopt;
  // A cell shows no more of a pattern than a box can hold; one that nobody touched stays whole.
  if (entry && (entry->edited || entry->column != kPatternColumn)) {
    ApplyCell(entry->row, entry->column, entry->text);
  }
  inPlaceEdit_.Close();
}

void RuleListCommands::ApplyCell(int row, int column, const std::wstring& text) {
  const auto id = list_.RuleIdOfRow(row);
  if (!id || !IsRuleColumn(column)) return;
  std::wstring cell;
  const bool changed = program_.rules.Edit(*id, [&](ThresholdRule& rule) {
    ApplyCellText(column, text, rule);
    cell = RuleCellText(column, rule);
  });
  if (changed) SetListCell(list_.Window(), row, column, cell);
}
