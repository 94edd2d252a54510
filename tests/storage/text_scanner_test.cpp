#include "storage/text_scanner.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "storage/rule_numbers.h"

namespace {

TEST(ParseDecimal, ReadsTheNumberAndNoMore) {
  const struct {
    const wchar_t* text;
    double value;
    std::size_t length;
  } cases[] = {
      {L"", 0, 0},
      {L"-", 0, 0},
      {L".", 0, 0},
      {L"e5", 0, 0},
      {L"nan", 0, 0},
      {L"inf", 0, 0},
      {L"12.5abc", 12.5, 4},
      {L"+.5", 0.5, 3},
      {L"5.", 5, 2},
      {L"1e3", 1000, 3},
      {L"1e", 1, 1},
      {L"1e+", 1, 1},
      {L"0x10", 0, 1},
      {L"-1.5E-1,", -0.15, 7},
      {L"1e999", DBL_MAX, 5},
      {L"-1e999", -DBL_MAX, 6},
      {L"1e-999", 0, 6},
      {L"1.2.3", 1.2, 3},
      {L"0e99999999999999999999", 0, 22},
  };
  for (const auto& each : cases) {
    const DecimalNumber number = ParseDecimal(each.text);
    EXPECT_EQ(number.value, each.value) << each.text;
    EXPECT_EQ(number.length, each.length) << each.text;
  }
}

TEST(ParseDecimal, RoundsAsTheRuntimeDoesHoweverManyDigits) {
  const std::string tie = "9007199254740993";  // half way between two doubles
  const std::string zeros(1200, '0');
  for (const std::string& text :
       {tie + "." + zeros, tie + "." + zeros + "1", "0." + zeros + tie + "e1210", tie + zeros + "e-1200",
        "0." + std::string(400, '0') + tie + "e-10", std::string(5000, '9') + "e-4990"}) {
    EXPECT_EQ(ParseDecimal(std::wstring(text.begin(), text.end())).value, std::strtod(text.c_str(), nullptr)) << text;
  }
  std::mt19937_64 random(1);
  for (int round = 0; round < 20'000; ++round) {
    const std::uint64_t bits = random();
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    char text[64];
    std::snprintf(text, sizeof text, "%.*g", static_cast<int>(random() % 20) + 1, value);
    EXPECT_EQ(ParseDecimal(std::wstring(text, text + std::strlen(text))).value, std::strtod(text, nullptr)) << text;
  }
}

TEST(TextScanner, ConvertsAndSaturates) {
  constexpr std::uint32_t kHighest = std::numeric_limits<std::uint32_t>::max();
  const struct {
    const wchar_t* text;
    bool converts;
    std::uint32_t value;
    const wchar_t* rest;
  } cases[] = {
      {L"7,", true, 7, L","},
      {L" \t\n\v\f\r+7", true, 7, L""},
      {L"-3x", true, 0, L"x"},
      {L"4294967295", true, kHighest, L""},
      {L"4294967296", true, kHighest, L""},
      {L"99999999999999999999999 ", true, kHighest, L" "},
      {L"+-1", false, 5, L"+-1"},
      {L"  x", false, 5, L"  x"},
      {L"", false, 5, L""},
      {L"0012", true, 12, L""},
      {L"1.5", true, 1, L".5"},
  };
  for (const auto& each : cases) {
    TextScanner scanner(each.text);
    std::uint32_t value = 5;
    EXPECT_EQ(scanner.Unsigned(kHighest, value), each.converts) << each.text;
    EXPECT_EQ(value, each.value) << each.text;
    EXPECT_EQ(scanner.Rest(), each.rest) << each.text;
  }
}

TEST(RuleNumbers, Saturate) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(SaturateToUnsigned32(1500.9), 1500U);
  for (const double low : {nan, -infinity, -1.0, -0.0}) {
    EXPECT_EQ(SaturateToUnsigned32(low), 0U);
    EXPECT_EQ(BytesFromMegabytes(low), 0U);
  }
  for (const double high : {infinity, 1e300, 17592186044416.0}) {
    EXPECT_EQ(SaturateToUnsigned32(high), 0xFFFFFFFFU);
    EXPECT_EQ(BytesFromMegabytes(high), 0xFFFFFFFFFFFFFFFFU);
  }
  EXPECT_EQ(BytesFromMegabytes(0.1), 104857U);
  EXPECT_EQ(FormatTenths(nan), L"0.0");
  EXPECT_EQ(FormatTenths(infinity), FormatTenths(DBL_MAX));
}

TEST(RuleNumbers, TenthsAreThoseOfPrintf) {
  std::mt19937_64 random(2);
  for (int round = 0; round < 50'000; ++round) {
    double value = 0.0;
    const std::uint64_t bits = random();
    if (round % 3 == 0) {
      std::memcpy(&value, &bits, sizeof value);
      if (!std::isfinite(value)) continue;
    } else if (round % 3 == 1) {
      value = static_cast<double>(bits % 4001) / 20.0 - 100.0;  // ties and what looks like ties
    } else {
      value = static_cast<double>(bits >> (bits % 50)) / 1024.0;
    }
    char text[400];
    std::snprintf(text, sizeof text, "%.1f", value);
    EXPECT_EQ(FormatTenths(value), std::wstring(text, text + std::strlen(text)));
  }
}

}  // namespace
