#pragma once

// The rule editor's fields: which control shows what of a rule, and how its text goes back into the rule. A table, so that
// filling and reading the dialog are the same walk.

#include <span>
#include <string>
#include <string_view>

#include "core/records.h"

struct RuleEditorField {
  int controlId;
  std::size_t maxChars;  ///< no more of the control's text is read
  std::wstring (*text)(const ThresholdRule& rule);
  /// Any text is accepted.
  void (*store)(ThresholdRule& rule, std::wstring_view text);
};

/// Every text field of the dialog.
[[nodiscard]] std::span<const RuleEditorField> RuleEditorFields();
