#pragma once

// The text of rules.csv: a header line, then one rule a line, twelve fields separated by commas. It stands apart from the store
// so that the format is a pure function of the list.
//
// A pattern is written as it stands whenever the line can carry it. One that it cannot (empty, longer than 255 characters, or
// with a comma, CR, LF, NUL, Ctrl+Z or half a surrogate pair) is quoted:
//
//   7,","a,b",1,0,...         the pattern a,b
//   7,","a\nb\u001a\"\\",1,   \n, \r, \", \\ and \u with four hexadecimal digits stand for characters
//
// The three characters that open the quoted form would be, read plainly, a pattern of one double quote and a flag that is no
// number: a line that the plain reading drops. So no plain pattern is ever mistaken for a quoted one, one that holds double
// quotes included.

#include <optional>
#include <string>
#include <string_view>

#include "core/records.h"

/// Whole file, LF line ends.
[[nodiscard]] std::wstring FormatRulesCsv(const RuleList& rules);
/// The rules of every line that yields at least id, pattern and flag; other lines are dropped. A line ends at a NUL. Nothing when
/// the text has not even a first line.
[[nodiscard]] std::optional<RuleList> ParseRulesCsv(std::wstring_view text);

/// One line's rule, as the whole file's reader takes it; a reason, for people, when the line is dropped.
[[nodiscard]] const wchar_t* ParseRulesCsvLine(std::wstring_view line, ThresholdRule& rule);

/// Whether a rule with this pattern comes back from the file, whatever its other values are. True for up to 255 characters of any
/// kind.
[[nodiscard]] bool FitsRulesCsv(std::wstring_view pattern);
