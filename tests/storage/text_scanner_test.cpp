#include "platform/text_scanner.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "storage/rule_numbers.h"

namespace {

std::wstring Widen(const std::string& text) { return {text.begin(), text.end()}; }

TEST(ParseDecimal, RoundsAsTheRuntimeDoesHoweverManyDigits) {
  const std::string tie = "9007199254740993";  // half way between two doubles
  const std::string zeros(1200, '0');
  for (const std::string& text :
       {tie + "." + zeros, tie + "." + zeros + "1", "0." + zeros + tie + "e1210", tie + zeros + "e-1200",
        "0." + std::string(400, '0') + tie + "e-10", std::string(5000, '9') + "e-4990"}) {
    EXPECT_EQ(ParseDecimal(Widen(text)).value, std::strtod(text.c_str(), nullptr)) << text;
  }
}

// Any double, what looks like a tie, and whole numbers with some fraction.
TEST(RuleNumbers, AreReadAndWrittenAsTheRuntimeDoes) {
  std::mt19937_64 random(2);
  for (int round = 0; round < 50'000; ++round) {
    const std::uint64_t bits = random();
    double value = static_cast<double>(bits >> (bits % 50)) / 1024.0;
    if (round % 3 == 0) std::memcpy(&value, &bits, sizeof value);
    if (round % 3 == 1) value = static_cast<double>(bits % 4001) / 20.0 - 100.0;
    if (!std::isfinite(value)) continue;
    char text[400];
    std::snprintf(text, sizeof text, "%.1f", value);
    EXPECT_EQ(FormatTenths(value), Widen(text));
    std::snprintf(text, sizeof text, "%.*g", static_cast<int>(bits % 20) + 1, value);
    EXPECT_EQ(ParseDecimal(Widen(text)).value, std::strtod(text, nullptr)) << text;
  }
}

}  // namespace
