#pragma once

// Rules from a file of either form, with what did not come out of it as it stands there.

#include <optional>
#include <string>
#include <vector>

#include "core/records.h"

/// What became of a line of the file.
struct LineFinding {
  std::size_t line;  ///< from 1
  bool dropped;      ///< else changed
  std::wstring why;
};

struct RulesFile {
  RuleList rules;
  std::vector<LineFinding> findings;
};

/// rules.csv, or exported JSON when the text begins with a brace. Nothing when the file cannot be read.
[[nodiscard]] std::optional<RulesFile> ReadRulesFile(const std::wstring& path);
