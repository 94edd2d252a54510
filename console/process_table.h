#pragma once

#include <string>

#include "core/records.h"

/// The processes that a rule matches with their seven figures, the one nearest to a ceiling first; "-" for what cannot be read.
/// UTF-8, a head line and a line for each.
[[nodiscard]] std::string FormatProcessTable(const ProcessSample& sample, const RuleList& rules);
