#pragma once

// One rule against one process: which ceilings are exceeded, in words.

#include <string>

#include "core/records.h"

/// The texts of all ceilings that the process exceeds, joined by "; "; empty when it exceeds none. Does not look at the name or
/// at whether the rule is enabled.
[[nodiscard]] std::wstring ViolationText(const ThresholdRule& rule, const ProcessMetrics& metrics);
