#include "storage/rule_numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/text_format.h"

namespace {

constexpr double kMaxDouble = std::numeric_limits<double>::max();

constexpr RuleNumber kNumbers[] = {
    {L"MaxHandles", L"maxHandles", &ThresholdRule::maxHandles},
    {L"MaxWorkingSetMB", L"maxWorkingSetMB", &ThresholdRule::maxWorkingSet},
    {L"MaxPrivateBytesMB", L"maxPrivateBytesMB", &ThresholdRule::maxPrivateBytes},
    {L"MaxCPU", L"maxCPUPercent", &ThresholdRule::maxCpuPercent},
    {L"MaxThreads", L"maxThreads", &ThresholdRule::maxThreads},
    {L"MaxGDI", L"maxGDIObjects", &ThresholdRule::maxGdiObjects},
    {L"MaxUSER", L"maxUSERObjects", &ThresholdRule::maxUserObjects},
    {L"AlertActions", L"alertActions", &ThresholdRule::alertActions},
    {L"CooldownSec", L"cooldownSeconds", &ThresholdRule::cooldownSec},
};

std::wstring FormatNumber(std::uint32_t count) { return FormatText(L"%u", count); }
std::wstring FormatNumber(std::uint64_t bytes) { return FormatTenths(MegabytesFromBytes(bytes)); }
std::wstring FormatNumber(double value) { return FormatTenths(value); }

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

std::span<const RuleNumber> RuleNumbers() { return kNumbers; }

std::wstring RuleNumberText(const RuleNumber& number, const ThresholdRule& rule) {
  return std::visit([&](auto field) { return FormatNumber(rule.*field); }, number.field);
}
