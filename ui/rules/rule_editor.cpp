#include "ui/rules/rule_editor.h"

#include "platform/text_format.h"
#include "res/resource.h"
#include "ui/framework/dialog.h"
#include "ui/framework/resources.h"
#include "ui/rules/number_text.h"
#include "ui/rules/rule_field_text.h"

namespace {

constexpr std::size_t kMaxNumberChars = 63;

/// In the order of Ceilings().
constexpr int kCeilingControls[kCeilingCount] = {IDC_MAX_HANDLES, IDC_MAX_WORKING_SET, IDC_MAX_PRIVATE_BYTES, IDC_MAX_CPU,
                                                 IDC_MAX_THREADS, IDC_MAX_GDI,         IDC_MAX_USER};

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
  SetItemText(IDC_PATTERN, rule_.processPattern);
  shownPattern_ = ItemText(IDC_PATTERN, kMaxPatternChars);
  SetChecked(IDC_ENABLED, rule_.enabled);
  for (std::size_t index = 0; index < kCeilingCount; ++index)
    SetItemText(kCeilingControls[index], CeilingText(Ceilings()[index], rule_));
  // 0 is a cooldown like any other, not the absence of one.
  SetItemText(IDC_COOLDOWN, FormatText(L"%u", rule_.cooldownSec));
  ApplyDarkMode(kDarkControls);
  return true;
}

bool RuleEditor::OnCommand(WORD id, WORD notification) {
  if (id == IDOK) StoreFields();
  return Dialog::OnCommand(id, notification);
}

void RuleEditor::StoreFields() const {
  // An imported pattern can be longer than the field gives back; one that nobody touched stays whole.
  const std::wstring pattern = ItemText(IDC_PATTERN, kMaxPatternChars);
  if (IsEdited(Item(IDC_PATTERN), shownPattern_, pattern)) rule_.processPattern = pattern;
  rule_.enabled = IsChecked(IDC_ENABLED);
  for (std::size_t index = 0; index < kCeilingCount; ++index)
    StoreCeiling(Ceilings()[index], rule_, ItemText(kCeilingControls[index], kMaxNumberChars), ReadFieldInteger);
  rule_.cooldownSec = ReadFieldInteger(ItemText(IDC_COOLDOWN, kMaxNumberChars));
  // The editor has no control for the actions; a rule that went through it notifies and logs.
  rule_.alertActions = ACTION_NOTIFY | ACTION_LOG;
}

}  // namespace

bool RunRuleEditor(HINSTANCE instance, HWND owner, ThresholdRule& rule) {
  return RuleEditor(instance, rule).RunModal(owner) == IDOK;
}
