#include "ui/rules/number_text.h"

#include <limits>

#include "platform/text_scanner.h"

namespace {

std::wstring_view WithoutLeadingSpace(std::wstring_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  return text;
}

struct Integer {
  bool negative = false;
  std::uint64_t magnitude = 0;  ///< stops growing beyond 32 bits
};

Integer ReadInteger(std::wstring_view text) {
  text = WithoutLeadingSpace(text);
  Integer result;
  result.negative = text.starts_with(L'-');
  if (result.negative || text.starts_with(L'+')) text.remove_prefix(1);
  for (const wchar_t c : text) {
    if (c < L'0' || c > L'9' || result.magnitude > std::numeric_limits<std::uint32_t>::max()) break;
    result.magnitude = result.magnitude * 10 + static_cast<std::uint64_t>(c - L'0');
  }
  return result;
}

std::uint32_t Saturate(std::uint64_t value, std::uint32_t limit) {
  return value > limit ? limit : static_cast<std::uint32_t>(value);
}

}  // namespace

std::uint32_t ReadCellInteger(std::wstring_view text) {
  constexpr std::uint32_t kLeastSignedMagnitude = 0x8000'0000;
  const Integer number = ReadInteger(text);
  if (number.negative) return 0U - Saturate(number.magnitude, kLeastSignedMagnitude);
  return Saturate(number.magnitude, std::numeric_limits<std::uint32_t>::max());
}

std::uint32_t ReadFieldInteger(std::wstring_view text) {
  const Integer number = ReadInteger(text);
  return number.negative ? 0 : Saturate(number.magnitude, std::numeric_limits<std::uint32_t>::max());
}

double ReadDecimal(std::wstring_view text) { return ParseDecimal(WithoutLeadingSpace(text)).value; }
