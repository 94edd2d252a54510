#include "ui/rules/number_text.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

TEST(NumberText, IntegersOfCellsAndFields) {
  const struct {
    const wchar_t* text;
    std::uint32_t cell;
    std::uint32_t field;
  } cases[] = {{L"", 0, 0},    {L"12abc", 12, 12},     {L" \t 7 8", 7, 7},
               {L"+-5", 0, 0}, {L"-5", 0xFFFFFFFB, 0}, {L"4294967296", 0xFFFFFFFF, 0xFFFFFFFF},
               {L"0x1", 0, 0}, {L"+9", 9, 9},          {L"-99999999999", 0x80000000, 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(ReadCellInteger(c.text), c.cell) << testing::PrintToString(std::wstring(c.text));
    EXPECT_EQ(ReadFieldInteger(c.text), c.field) << testing::PrintToString(std::wstring(c.text));
  }
}

TEST(NumberText, Decimals) {
  constexpr double kMax = std::numeric_limits<double>::max();
  const std::pair<const wchar_t*, double> cases[] = {
      {L"", 0.0},       {L"-", 0.0},    {L"12,5", 12.0}, {L" -5", -5.0}, {L"+.5x", 0.5},   {L"3.", 3.0},       {L"1e+", 1.0},
      {L"25E-1%", 2.5}, {L"0x10", 0.0}, {L"inf", 0.0},   {L"1d5", 1.0},  {L"1e999", kMax}, {L"-1e999", -kMax}, {L"1e-999", 0.0},
  };
  for (const auto& [text, value] : cases) EXPECT_EQ(ReadDecimal(text), value) << testing::PrintToString(std::wstring(text));
}

}  // namespace
