#include "ui/rules/rule_editor.h"

#include "core/records.h"
#include "res/resource.h"
#include "ui/framework/dialog.h"
#include "ui/framework/resources.h"
#include "ui/rules/rule_editor_model.h"
#include "ui/rules/rule_field_text.h"

namespace {

constexpr int kDarkControls[] = {IDC_PATTERN, IDC_ENABLED,     IDC_MAX_HANDLES, IDC_MAX_WORKING_SET, IDC_MAX_PRIVATE_BYTES,
                                 IDC_MAX_CPU, IDC_MAX_THREADS, IDC_MAX_GDI,     IDC_MAX_USER,        IDC_COOLDOWN,
                                 IDOK,        IDCANCEL};

class RuleEditor : public Dialog {
 public:
  RuleEditor(HINSTANCE instance, ThresholdRule& rule) : Dialog(instance, IDD_RULE_EDITOR), rule_(rule) {}

 private:
  bool OnInitDialog() override;
  bool OnCommand(WORD id, WORD notification) override;
  void StoreFields() const;

  ThresholdRule& rule_;
  std::wstring shownPattern_;
};

bool RuleEditor::OnInitDialog() {
  for (const RuleEditorField& field : RuleEditorFields()) SetItemText(field.controlId, field.text(rule_));
  shownPattern_ = ItemText(IDC_PATTERN, kMaxPatternChars);
  SetChecked(IDC_ENABLED, rule_.enabled);
  ApplyDarkMode(kDarkControls);
  return true;
}

bool RuleEditor::OnCommand(WORD id, WORD notification) {
  if (id == IDOK) StoreFields();
  return Dialog::OnCommand(id, notification);
}

void RuleEditor::StoreFields() const {
  for (const RuleEditorField& field : RuleEditorFields()) {
    const std::wstring text = ItemText(field.controlId, field.maxChars);
    // An imported pattern can be longer than the field gives back; one that nobody touched stays whole.
    if (field.controlId == IDC_PATTERN && !IsEdited(Item(IDC_PATTERN), shownPattern_, text)) continue;
    field.store(rule_, text);
  }
  rule_.enabled = IsChecked(IDC_ENABLED);
  // The editor has no control for the actions; a rule that went through it notifies and logs.
  rule_.alertActions = ACTION_NOTIFY | ACTION_LOG;
}

}  // namespace

bool RunRuleEditor(HINSTANCE instance, HWND owner, ThresholdRule& rule) {
  return RuleEditor(instance, rule).RunModal(owner) == IDOK;
}
