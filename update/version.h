#pragma once

// The program's version, the rules by which versions compare, and how the update server's answer names one.

#include <cstdint>
#include <string>
#include <string_view>

#include "product_config.h"

inline constexpr wchar_t AppVersion[] = L"" VANTORA_VERSION_STRING;
inline constexpr wchar_t AppVersionDisplay[] = L"" VANTORA_VERSION_STRING " " VANTORA_CHANNEL;

/// Four dotted numbers, eight bits each and not masked, as one number; 0 is invalid (null, under 7 characters, no number).
[[nodiscard]] std::uint32_t VersionToNumber(const wchar_t* text);
/// Whether `latest` is newer than this program.
[[nodiscard]] bool IsNewerVersion(const std::wstring& latest);

/// The bytes of an answer that count: everything before the first NUL. Their way to text is the system's.
[[nodiscard]] std::string_view VersionAnswerBytes(std::string_view body);
/// The version that the answer's text names: its digits and dots. The program's own version, with a diagnostic line, when they
/// make no valid number.
[[nodiscard]] std::wstring LatestVersionFromAnswer(const std::wstring& text);
