// Runs the built console companion against this test's own process.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/throwaway_folder.h"

namespace {

class ConsoleRun : public testing::Test {
 protected:
  [[nodiscard]] std::string File(const char* name) const { return std::filesystem::path(folder_.Path(name)).string(); }
  [[nodiscard]] int Run(const std::string& arguments) const {
    const std::string command =
        "exec timeout 30 '" VANTORA_CONSOLE "' " + arguments + " '" + File("rules.csv") + "' >'" + File("out") + "' 2>/dev/null";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  const ThrowawayFolder folder_;
};

TEST_F(ConsoleRun, PrintsOneLogLineForEachCycleInWhichARealProcessIsOverACeiling) {
  const std::vector<char> block(64u << 20, 'x');
  const std::jthread busy([](const std::stop_token& end) {
    while (!end.stop_requested()) {
    }
  });
  // Rule 7 is exceeded, in its CPU ceiling from the second cycle on; rule 8 is not.
  ThrowawayFolder::Write(folder_.Path("rules.csv"),
                         "header\n7,app_test,1,2,64,64,0.1,1,0,0,0,0\n8,app_test,1,999,0,0,0,999,0,0,0,0\n");
  EXPECT_EQ(Run("--interval 1 --cycles 2"), 0);
  const std::string own = "\t" + std::to_string(::getpid()) + "\t";
  const std::string others = "(?:(?!.*" + own + ").*\n)*";
  const std::string head = others + R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)" + own +
                           R"(app_test\tHandles: \d\d? > 2; Working Set: \d+ MB > 64 MB; Private Bytes: \d+ MB > 64 MB; )";
  const std::regex expected(head + R"(Threads: 2 > 1\n)" + head + R"(CPU: \d+\.\d% > 0\.1%; Threads: 2 > 1\n)" + others);
  const std::string output = ThrowawayFolder::Read(folder_.Path("out"));
  EXPECT_TRUE(std::regex_match(output, expected)) << output;
}

TEST_F(ConsoleRun, TellsAMissingRulesFileAndWrongArgumentsApart) {
  EXPECT_EQ(Run("--cycles 1"), 1);
  EXPECT_EQ(Run("--interval 0"), 2);
}

}  // namespace
