#pragma once

// How a rule's fields read in text, shared by the rule list and the rule editor: ceilings as whole numbers, memory in whole MB,
// and nothing at all for a ceiling that is not set.

#include <string>

#include "core/records.h"
#include "platform/text_format.h"

/// The longest process pattern that a field or a cell can hold.
inline constexpr std::size_t kMaxPatternChars = 255;

template <std::uint32_t ThresholdRule::*Field>
std::wstring CountText(const ThresholdRule& rule) {
  return rule.*Field == 0 ? std::wstring() : FormatText(L"%u", rule.*Field);
}

/// A ceiling below 1 MB reads "0": it is set, though it rounds down to nothing.
template <std::uint64_t ThresholdRule::*Field>
std::wstring MegabytesText(const ThresholdRule& rule) {
  if (rule.*Field == 0) return {};
  return FormatText(L"%llu", static_cast<unsigned long long>(rule.*Field / kBytesPerMb));
}

inline std::wstring CpuText(const ThresholdRule& rule) {
  return rule.maxCpuPercent > 0.0 ? FormatText(L"%.0f", rule.maxCpuPercent) : std::wstring();
}
