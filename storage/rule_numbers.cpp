#include "storage/rule_numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/records.h"
#include "platform/text_format.h"

namespace {

constexpr double kMaxDouble = std::numeric_limits<double>::max();

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
  std::wstring text = FormatText(L"%.1f", std::clamp(value, -kMaxDouble, kMaxDouble));
  // Whatever the locale's point is, it stands before the last digit.
  text[text.size() - 2] = L'.';
  return text;
}
