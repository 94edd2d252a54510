#pragma once

// The one pattern matcher of rules and exclusions.

#include <string>
#include <vector>

/// Whether the whole of `name` matches the whole of `pattern`: `*` any run, `?` one character, A-Z folded, nothing else. Linear
/// with one backtracking point; both null-terminated.
[[nodiscard]] bool WildcardMatch(const wchar_t* name, const wchar_t* pattern);

/// Whether a pattern of the list matches; tried in list order.
[[nodiscard]] bool IsExcluded(const wchar_t* name, const std::vector<std::wstring>& exclusions);
