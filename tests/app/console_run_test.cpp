// Runs the built console companion against this test's own process.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr char kHeader[] =
    "RuleId,ProcessPattern,Enabled,MaxHandles,MaxWorkingSetMB,MaxPrivateBytesMB,MaxCPU,MaxThreads,MaxGDI,MaxUSER,AlertActions,"
    "CooldownSec\n";

/// Threads that only exist, so that this process is over a ceiling.
class IdleThreads {
 public:
  explicit IdleThreads(int count) {
    for (int i = 0; i < count; ++i) {
      threads_.emplace_back([this] {
        std::unique_lock lock(mutex_);
        ended_.wait(lock, [this] { return end_; });
      });
    }
  }
  ~IdleThreads() {
    {
      std::lock_guard lock(mutex_);
      end_ = true;
    }
    ended_.notify_all();
    for (std::thread& thread : threads_) thread.join();
  }
  IdleThreads(const IdleThreads&) = delete;
  IdleThreads& operator=(const IdleThreads&) = delete;

 private:
  std::mutex mutex_;
  std::condition_variable ended_;
  bool end_ = false;
  std::vector<std::thread> threads_;
};

class ConsoleRun : public testing::Test {
 protected:
  ConsoleRun() {
    char folder[] = "/tmp/vantora-console-XXXXXX";
    folder_ = ::mkdtemp(folder);
  }
  ~ConsoleRun() override {
    for (const char* name : {"/rules.csv", "/out"}) ::unlink((folder_ + name).c_str());
    ::rmdir(folder_.c_str());
  }

  int Run(const std::string& arguments) {
    const std::string command =
        "exec timeout 30 '" VANTORA_CONSOLE "' " + arguments + " '" + folder_ + "/rules.csv' >'" + folder_ + "/out' 2>/dev/null";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  void WriteRules(const std::string& rows) { std::ofstream(folder_ + "/rules.csv") << kHeader << rows; }
  std::vector<std::string> OutputLines() {
    std::ifstream file(folder_ + "/out");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  std::string folder_;
};

TEST_F(ConsoleRun, PrintsOneLogLineForEachCycleInWhichARealProcessIsOverACeiling) {
  const IdleThreads threads(20);
  WriteRules("7,app_test,1,0,0.0,0.0,0.0,5,0,0,0,0\n8,app_test,1,0,0.0,0.0,0.0,5000,0,0,0,0\n");
  EXPECT_EQ(Run("--interval 1 --cycles 2"), 0);
  const auto lines = OutputLines();
  ASSERT_EQ(lines.size(), 2u);
  const std::regex expected(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\t)" + std::to_string(::getpid()) +
                            R"(\tapp_test\tThreads: \d+ > 5)");
  for (const std::string& line : lines) EXPECT_TRUE(std::regex_match(line, expected)) << line;
}

TEST_F(ConsoleRun, TellsAMissingRulesFileAndWrongArgumentsApart) {
  EXPECT_EQ(Run("--cycles 1"), 1);
  EXPECT_EQ(Run("--interval 0"), 2);
}

}  // namespace
