#include "platform/text_scanner.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

namespace {

bool IsDigit(wchar_t character) { return character >= L'0' && character <= L'9'; }

/// No double's rounding depends on more significant digits than this, except on whether any later one is not 0.
constexpr std::size_t kSignificantDigits = 800;
constexpr std::int64_t kExponentBound = 100'000;

/// A decimal number as digits and a power of ten, so that converting it needs no decimal point, whose character a locale may
/// change.
class DigitCollector {
 public:
  void AddInteger(wchar_t digit) { exponent_ += Add(digit) ? 0 : 1; }
  void AddFraction(wchar_t digit) { exponent_ -= Add(digit) ? 1 : 0; }
  void AddExponent(std::int64_t exponent) { exponent_ += exponent; }

  [[nodiscard]] double Value() const {
    if (digits_.empty()) return 0.0;
    std::string text = digits_;
    if (moreDigits_) text.push_back('1');
    const std::int64_t exponent = exponent_ - (moreDigits_ ? 1 : 0);
    char suffix[24];
    std::snprintf(suffix, sizeof suffix, "e%d", static_cast<int>(std::clamp(exponent, -kExponentBound, kExponentBound)));
    text += suffix;
    return std::min(std::strtod(text.c_str(), nullptr), std::numeric_limits<double>::max());
  }

 private:
  /// Whether the digit counts as one more place of the mantissa.
  bool Add(wchar_t digit) {
    if (digits_.size() == kSignificantDigits) {
      moreDigits_ = moreDigits_ || digit != L'0';
      return false;
    }
    if (!digits_.empty() || digit != L'0') digits_.push_back(static_cast<char>('0' + (digit - L'0')));
    return true;
  }

  std::string digits_;
  bool moreDigits_ = false;
  std::int64_t exponent_ = 0;
};

/// The exponent at `position` ("e", optional sign, digits); leaves both alone when there is none.
void TakeExponent(std::wstring_view text, std::size_t& position, DigitCollector& digits) {
  std::size_t end = position;
  if (end == text.size() || (text[end] != L'e' && text[end] != L'E')) return;
  ++end;
  const bool negative = end < text.size() && text[end] == L'-';
  if (end < text.size() && (text[end] == L'-' || text[end] == L'+')) ++end;
  if (end == text.size() || !IsDigit(text[end])) return;
  std::int64_t exponent = 0;
  for (; end < text.size() && IsDigit(text[end]); ++end) {
    // Large enough to cancel as many zeros as a file can hold, small enough never to overflow.
    exponent = std::min<std::int64_t>(exponent * 10 + (text[end] - L'0'), std::int64_t{1} << 48);
  }
  digits.AddExponent(negative ? -exponent : exponent);
  position = end;
}

}  // namespace

bool IsBlank(wchar_t character) {
  constexpr std::wstring_view kOthers = L" \x00A0\x1680\x2028\x2029\x202F\x205F\x3000";
  return (character >= L'\t' && character <= L'\r') || (character >= L'\x2000' && character <= L'\x200A') ||
         kOthers.find(character) != std::wstring_view::npos;
}

DecimalNumber ParseDecimal(std::wstring_view text) {
  std::size_t position = 0;
  const bool negative = !text.empty() && text[0] == L'-';
  if (!text.empty() && (text[0] == L'-' || text[0] == L'+')) ++position;
  const std::size_t first = position;
  DigitCollector digits;
  for (; position < text.size() && IsDigit(text[position]); ++position) digits.AddInteger(text[position]);
  std::size_t digitCount = position - first;
  if (position < text.size() && text[position] == L'.') {
    const std::size_t point = position++;
    for (; position < text.size() && IsDigit(text[position]); ++position) digits.AddFraction(text[position]);
    digitCount += position - point - 1;
  }
  if (digitCount == 0) return {};
  TakeExponent(text, position, digits);
  const double value = digits.Value();
  return {negative ? -value : value, position};
}

void TextScanner::SkipBlanks() {
  std::size_t count = 0;
  while (count < rest_.size() && IsBlank(rest_[count])) ++count;
  Skip(count);
}

bool TextScanner::Literal(wchar_t character) {
  if (rest_.empty() || rest_.front() != character) return false;
  Skip(1);
  return true;
}

bool TextScanner::TakeInteger(Integer& integer) {
  TextScanner ahead = *this;
  ahead.SkipBlanks();
  Integer found;
  found.negative = ahead.Literal(L'-');
  if (!found.negative) (void)ahead.Literal(L'+');
  std::size_t count = 0;
  for (; count < ahead.rest_.size() && IsDigit(ahead.rest_[count]); ++count) {
    const auto digit = static_cast<std::uint64_t>(ahead.rest_[count] - L'0');
    found.magnitude = std::min(found.magnitude * 10 + digit, std::uint64_t{1} << 48);
  }
  if (count == 0) return false;
  ahead.Skip(count);
  *this = ahead;
  integer = found;
  return true;
}

bool TextScanner::Unsigned(std::uint32_t highest, std::uint32_t& value) {
  Integer integer;
  if (!TakeInteger(integer)) return false;
  value = integer.negative ? 0 : integer.Saturated(highest);
  return true;
}

bool TextScanner::IsNonZero(bool& value) {
  Integer integer;
  if (!TakeInteger(integer)) return false;
  value = integer.magnitude != 0;
  return true;
}

bool TextScanner::Decimal(double& value) {
  TextScanner ahead = *this;
  ahead.SkipBlanks();
  const DecimalNumber number = ParseDecimal(ahead.rest_);
  if (number.length == 0) return false;
  ahead.Skip(number.length);
  // An exponent without digits makes the whole field no number: scanf has read too far to give it back.
  const std::wstring_view taken = rest_.substr(0, rest_.size() - ahead.rest_.size());
  if (!ahead.rest_.empty() && (ahead.rest_.front() == L'e' || ahead.rest_.front() == L'E') &&
      taken.find_first_of(L"eE") == std::wstring_view::npos) {
    return false;
  }
  *this = ahead;
  value = number.value;
  return true;
}
