#include "ui/rules/rule_list_commands.h"

#include "res/resource.h"
#include "ui/framework/dialog.h"
#include "ui/framework/resources.h"
#include "ui/message_box/message_box.h"
#include "ui/rules/rule_editor.h"
#include "ui/rules/rule_exchange_commands.h"
#include "ui/rules/rule_list_model.h"
#include "ui/rules/rule_presets_menu.h"

struct RuleListCommands::Commands {
  // Each button has a menu item that does the same.
  static constexpr CommandRow<RuleListCommands> kRows[] = {
      {IDC_ADD_RULE, &RuleListCommands::OnAdd},        {IDM_ADD_RULE, &RuleListCommands::OnAdd},
      {IDC_EDIT_RULE, &RuleListCommands::OnEdit},      {IDM_EDIT_RULE, &RuleListCommands::OnEdit},
      {IDC_REMOVE_RULE, &RuleListCommands::OnRemove},  {IDM_REMOVE_RULE, &RuleListCommands::OnRemove},
      {IDC_PRESETS, &RuleListCommands::OnPresets},     {IDM_PRESETS, &RuleListCommands::OnPresets},
      {IDC_IMPORT_RULES, &RuleListCommands::OnImport}, {IDM_IMPORT_RULES, &RuleListCommands::OnImport},
      {IDC_EXPORT_RULES, &RuleListCommands::OnExport}, {IDM_EXPORT_RULES, &RuleListCommands::OnExport},
  };
};

void RuleListCommands::OnInitDialog(HWND dialog) {
  dialog_ = dialog;
  list_.OnInitDialog(dialog);
}

bool RuleListCommands::OnCommand(WORD id) { return DispatchCommand<RuleListCommands>(*this, Commands::kRows, id); }

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
  const ThresholdRule* rule = FindRule(*rules, selected.front());
  if (rule == nullptr) return;
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
  const std::size_t before = program_.rules.Snapshot()->size();
  if (RunPresetsCommand(dialog_, program_.rules)) list_.RefreshAdded(before);
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
    list_.ApplyInPlaceEdit(row, kEnabledColumn, {});
  } else if (IsRuleColumn(column)) {
    EndInPlaceEdit(true);  // a box over another cell commits before the next one opens
    inPlaceEdit_.Start(list_.Window(), row, column);
  }
}

void RuleListCommands::EndInPlaceEdit(bool commit) {
  const auto entry = commit ? inPlaceEdit_.Content() : std::nullopt;
  // A cell shows no more of a pattern than a box can hold; one that nobody touched stays whole.
  if (entry && (entry->edited || entry->column != kPatternColumn)) {
    list_.ApplyInPlaceEdit(entry->row, entry->column, entry->text);
  }
  inPlaceEdit_.Close();
}
