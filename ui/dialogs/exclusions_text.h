#pragma once

// The exclusion list as the text of an edit box, one pattern a line, and back. Takes whatever a user pastes.

#include <string>
#include <string_view>
#include <vector>

/// The patterns of the text in their order: split at any run of CR and LF, white space at both ends dropped, blank lines dropped.
/// Nothing else is changed or checked. Linear in the text.
[[nodiscard]] std::vector<std::wstring> SplitExclusions(std::wstring_view text);

/// The patterns with CR LF between them.
[[nodiscard]] std::wstring JoinExclusions(const std::vector<std::wstring>& exclusions);

/// The text with every line end (CR LF, lone CR, lone LF) a CR LF, the only one that an edit box shows as such.
[[nodiscard]] std::wstring WithEditLineEnds(std::wstring_view text);
