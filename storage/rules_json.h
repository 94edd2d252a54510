#pragma once

// Rules as JSON text. The writer has one fixed layout; the reader is a scanner for the keys that a rule has, indifferent to the
// rest of the document. Both work on text alone, and the reader takes time in proportion to it.

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "core/records.h"

/// The document for the list, LF line ends. Ids are not part of it.
[[nodiscard]] std::wstring FormatRulesJson(const RuleList& rules);

/// The rules found after the first quoted word rules, in document order, with id 0. Objects without a pattern, or with one that
/// rules.csv cannot carry, are left out. Nothing when the text has no such word.
[[nodiscard]] std::optional<RuleList> ParseRulesJson(std::wstring_view text);

/// Hands over each object behind the quoted word rules: its position in the text and its rule, null when it is left out. False
/// when the text has no such word.
bool ForEachRuleObject(std::wstring_view text, const std::function<void(std::size_t position, const ThresholdRule* rule)>& take);

/// The unescaped text value of the first occurrence of the key in one object's text.
[[nodiscard]] std::optional<std::wstring> FindJsonStringValue(std::wstring_view object, std::wstring_view key);
/// The number after the first occurrence of the key in one object's text; 0 when something else stands there.
[[nodiscard]] std::optional<double> FindJsonNumberValue(std::wstring_view object, std::wstring_view key);
