#pragma once

// How a rule's numbers cross between memory and the text formats: whole bytes there, megabytes with one decimal here. Numbers out
// of a field's range saturate; what is not a number is 0.

#include <cstdint>
#include <span>
#include <string>
#include <variant>

#include "core/records.h"

/// Truncated toward zero into 0 to 4,294,967,295.
[[nodiscard]] std::uint32_t SaturateToUnsigned32(double value);
/// Megabytes of 1,048,576 bytes, truncated toward zero to whole bytes.
[[nodiscard]] std::uint64_t BytesFromMegabytes(double megabytes);
[[nodiscard]] double MegabytesFromBytes(std::uint64_t bytes);

/// What "%.1f" gives in the C locale, whatever locale is set.
[[nodiscard]] std::wstring FormatTenths(double value);

/// One number of a rule as the files name it. Its type is its unit: a count, bytes that the files give in megabytes, a decimal.
struct RuleNumber {
  const wchar_t* column;  ///< of rules.csv
  const wchar_t* key;     ///< of the JSON document
  std::variant<std::uint32_t ThresholdRule::*, std::uint64_t ThresholdRule::*, double ThresholdRule::*> field;
};

/// In the order of both files.
[[nodiscard]] std::span<const RuleNumber> RuleNumbers();
[[nodiscard]] std::wstring RuleNumberText(const RuleNumber& number, const ThresholdRule& rule);
