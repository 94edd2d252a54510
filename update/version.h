#pragma once

// The program's version and the rules by which versions compare.

#include <cstdint>
#include <string>

inline constexpr wchar_t AppVersion[] = L"0.0.2.7";
inline constexpr wchar_t AppVersionDisplay[] = L"0.0.2.7 BETA";

/// Four dotted numbers, eight bits each and not masked, as one number; 0 is invalid (null, under 7 characters, no number).
[[nodiscard]] std::uint32_t VersionToNumber(const wchar_t* text);
/// Whether `latest` is newer than this program.
[[nodiscard]] bool IsNewerVersion(const std::wstring& latest);
/// Keeps only digits and dots, in their order.
[[nodiscard]] std::wstring FilterVersionText(const std::wstring& text);
