#pragma once

// The dialog in which the user writes one rule. It knows the record it is given and nothing of the rule list.

#include <windows.h>

struct ThresholdRule;

/// Runs the editor on the rule. True after OK, which has written every field but the id; otherwise the rule is untouched. The
/// owner's thread.
[[nodiscard]] bool RunRuleEditor(HINSTANCE instance, HWND owner, ThresholdRule& rule);
