// Runs the built console companion against this test's own process.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <regex>
#include <string>

#include "tests/storage/throwaway_folder.h"

namespace {

class ConsoleRun : public testing::Test {
 protected:
  [[nodiscard]] std::string File(const char* name) const {
    const std::wstring path = folder_.Path(name);
    return std::filesystem::path(path).string();
  }
  [[nodiscard]] int Run(const std::string& arguments) const {
    const std::string command =
        "exec timeout 30 '" VANTORA_CONSOLE "' " + arguments + " '" + File("rules.csv") + "' >'" + File("out") + "' 2>/dev/null";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  const ThrowawayFolder folder_;
};

TEST_F(ConsoleRun, PrintsOneLogLineForEachCycleInWhichARealProcessIsOverACeiling) {
  // Rule 7 is exceeded, rule 8 is not.
  ThrowawayFolder::Write(folder_.Path("rules.csv"),
                         "header\n7,app_test,1,0,1.0,0,0,0,0,0,0,0\n8,app_test,1,0,0,0,0,5000,0,0,0,0\n");
  EXPECT_EQ(Run("--interval 1 --cycles 2"), 0);
  const std::string line =
      R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\t)" + std::to_string(::getpid()) + R"(\tapp_test\tWorking Set: \d+ MB > 1 MB\n)";
  const std::string output = ThrowawayFolder::Read(folder_.Path("out"));
  EXPECT_TRUE(std::regex_match(output, std::regex(line + line))) << output;
}

TEST_F(ConsoleRun, TellsAMissingRulesFileAndWrongArgumentsApart) {
  EXPECT_EQ(Run("--cycles 1"), 1);
  EXPECT_EQ(Run("--interval 0"), 2);
}

}  // namespace
