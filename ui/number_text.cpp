#include "ui/number_text.h"

#include <cmath>
#include <cwchar>
#include <limits>
#include <string>

namespace {

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

std::size_t SkipDigits(std::wstring_view text, std::size_t at) {
  while (at < text.size() && IsDigit(text[at])) ++at;
  return at;
}

std::size_t SkipSign(std::wstring_view text, std::size_t at) {
  return at < text.size() && (text[at] == L'-' || text[at] == L'+') ? at + 1 : at;
}

std::wstring_view WithoutLeadingSpace(std::wstring_view text) {
  const auto start = text.find_first_not_of(L" \t\n\v\f\r");
  return start == std::wstring_view::npos ? std::wstring_view{} : text.substr(start);
}

struct Integer {
  bool negative = false;
  std::uint64_t magnitude = 0;  ///< stops growing beyond 32 bits
};

Integer ReadInteger(std::wstring_view text) {
  text = WithoutLeadingSpace(text);
  Integer result;
  const std::size_t start = SkipSign(text, 0);
  result.negative = start == 1 && text.front() == L'-';
  for (const wchar_t c : text.substr(start, SkipDigits(text, start) - start)) {
    result.magnitude = result.magnitude * 10 + static_cast<std::uint64_t>(c - L'0');
    if (result.magnitude > std::numeric_limits<std::uint32_t>::max()) break;
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

double ReadDecimal(std::wstring_view text) {
  text = WithoutLeadingSpace(text);
  // The library's conversion also knows hexadecimal numbers, names such as "inf" and, in old runtimes, "d" for an exponent; only
  // what is a decimal number is handed to it.
  const std::size_t start = SkipSign(text, 0);
  std::size_t end = SkipDigits(text, start);
  std::size_t digits = end - start;
  if (end < text.size() && text[end] == L'.') {
    const std::size_t fraction = end + 1;
    end = SkipDigits(text, fraction);
    digits += end - fraction;
  }
  if (digits == 0) return 0.0;
  if (end < text.size() && (text[end] == L'e' || text[end] == L'E')) {
    const std::size_t exponent = SkipSign(text, end + 1);
    const std::size_t exponentEnd = SkipDigits(text, exponent);
    if (exponentEnd > exponent) end = exponentEnd;
  }
  const double value = std::wcstod(std::wstring(text.substr(0, end)).c_str(), nullptr);
  if (std::isinf(value)) return std::copysign(std::numeric_limits<double>::max(), value);
  return value;
}
