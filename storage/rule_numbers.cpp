#include "storage/rule_numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/records.h"
#include "platform/text_format.h"

namespace {

constexpr double kMaxDouble = std::numeric_limits<double>::max();

/// Tenths of 0 <= fraction < 1, rounded as if the exact product were: halves to even.
std::uint32_t RoundedTenths(double fraction) {
  const double eight = fraction * 8.0;
  const double two = fraction * 2.0;
  const double product = eight + two;
  // What the addition lost; both terms are exact.
  const double back = product - eight;
  const double lost = (eight - (product - back)) + (two - back);
  const double floor = std::floor(product);
  const double above = product - floor;
  auto tenths = static_cast<std::uint32_t>(floor);
  const bool tie = above == 0.5 && lost == 0.0;
  if (above > 0.5 || (above == 0.5 && lost > 0.0) || (tie && tenths % 2 == 1)) ++tenths;
  return tenths;
}

}  // namespace

std::uint32_t SaturateToUnsigned32(double value) {
  if (!(value > 0.0)) return 0;
  constexpr std::uint32_t kHighest = std::numeric_limits<std::uint32_t>::max();
  return value >= static_cast<double>(kHighest) ? kHighest : static_cast<std::uint32_t>(value);
}

std::uint64_t BytesFromMegabytes(double megabytes) {
  const double bytes = megabytes * static_cast<double>(kBytesPerMb);
  if (!(bytes > 0.0)) return 0;
  constexpr double kTwoTo64 = 18446744073709551616.0;
  return bytes >= kTwoTo64 ? std::numeric_limits<std::uint64_t>::max() : static_cast<std::uint64_t>(bytes);
}

double MegabytesFromBytes(std::uint64_t bytes) { return static_cast<double>(bytes) / static_cast<double>(kBytesPerMb); }

std::wstring FormatTenths(double value) {
  if (std::isnan(value)) value = 0.0;
  value = std::clamp(value, -kMaxDouble, kMaxDouble);
  const double magnitude = std::fabs(value);
  constexpr double kTwoTo53 = 9007199254740992.0;
  // From here on every double is whole, and a whole number's text has no decimal point for a locale to change.
  if (magnitude >= kTwoTo53) return FormatText(L"%.0f", value) + L".0";
  auto whole = static_cast<std::uint64_t>(magnitude);
  std::uint32_t tenths = RoundedTenths(magnitude - static_cast<double>(whole));
  if (tenths == 10) {
    ++whole;
    tenths = 0;
  }
  return FormatText(L"%ls%llu.%u", std::signbit(value) ? L"-" : L"", static_cast<unsigned long long>(whole), tenths);
}
