#pragma once

// How the update server's answer to a version request is read. The bytes' way to text is the system's and stands with the check
// itself.

#include <string>
#include <string_view>

/// The bytes that count: everything before the first NUL.
[[nodiscard]] std::string_view VersionAnswerBytes(std::string_view body);

/// The version that the answer's text names: its digits and dots. The program's own version, with a diagnostic line, when they
/// make no valid number.
[[nodiscard]] std::wstring LatestVersionFromAnswer(const std::wstring& text);
