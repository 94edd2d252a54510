#include "app/console_arguments.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(ParseConsoleArguments, TakesOptionsAndOneFileInAnyOrderAndNamesWhatMakesNoSense) {
  const struct {
    std::vector<const char*> arguments;
    std::optional<ConsoleArguments> expected;
    const char* named = "";
  } cases[] = {
      {{}, ConsoleArguments{}},
      {{"--cycles", "3", "mine.csv", "--interval", "1"}, {{"mine.csv", 1, 3}}},
      {{"--interval", "86400", "--cycles", "0"}, {{"rules.csv", 86'400, 0}}},
      {{"--cycles", "18446744073709551615"}, {{"rules.csv", 30, UINT64_MAX}}},
      {{"-h"}, {{"rules.csv", 30, 0, true}}},
      {{"--interval"}, {}, "--interval"},
      {{"--interval", "0"}, {}, "--interval"},
      {{"--interval", "86401"}, {}, "--interval"},
      {{"--interval", "4294967297"}, {}, "--interval"},
      {{"--interval", "1s"}, {}, "--interval"},
      {{"--interval", ""}, {}, "--interval"},
      {{"--cycles", "-1"}, {}, "--cycles"},
      {{"--cycles", "18446744073709551616"}, {}, "--cycles"},
      {{"--verbose"}, {}, "--verbose"},
      {{"a.csv", "b.csv"}, {}, "b.csv"},
      {{""}, {}, "''"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    std::string error;
    EXPECT_EQ(ParseConsoleArguments(c.arguments, error), c.expected);
    EXPECT_NE(error.find(c.named), std::string::npos) << error;
  }
}

}  // namespace
