// Runs the built console companion against this test's own process and what it starts.

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/throwaway_folder.h"

namespace {

class Console : public testing::Test {
 protected:
  [[nodiscard]] std::string File(const char* name) const { return std::filesystem::path(folder_.Path(name)).string(); }
  [[nodiscard]] std::string Text(const char* name) const { return ThrowawayFolder::Read(folder_.Path(name)); }
  /// Its exit code; what it printed is in "out" and "err".
  [[nodiscard]] int Run(const std::string& arguments) const {
    const std::string command = "cd '" + File("") + "' && HOME='" + File("") +
                                "' TZ=IST-5:30 exec timeout 30 '" VANTORA_CONSOLE "' " + arguments + " >out 2>err";
    const int status = std::system(("env -u XDG_CONFIG_HOME sh -c \"" + command + "\"").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  void Write(const char* name, const std::string& text) const { ThrowawayFolder::Write(folder_.Path(name), text); }

  const ThrowawayFolder folder_;
  /// This process's name from now on, which no other on the machine has, and that ends as the kernel's own mark after a name
  /// does.
  const std::string name_ = [] {
    std::string name = "wa) \xC3\xA4 " + std::to_string(::getpid());
    ::prctl(PR_SET_NAME, name.c_str());
    return name;
  }();
  const std::string namePattern_ = std::regex_replace(name_, std::regex(R"(\))"), R"(\))");
  /// Rule 7 is exceeded, in its CPU ceiling from the second cycle on; rule 8 is not.
  const std::string over_ = "h\n7," + name_ + ",1,2,64,64,0.1,1,0,0,0,0\n8," + name_ + ",1,999,0.0,0.0,0.0,999,0,0,0,0\n";
};

TEST_F(Console, ReportsARealProcessInBothFormatsInTheLogAndInTheMetrics) {
  const std::vector<char> block(64u << 20, 'x');
  const std::jthread busy([](const std::stop_token& end) {
    while (!end.stop_requested()) {
    }
  });
  Write("rules.csv", over_);
  const std::string pid = std::to_string(::getpid());
  EXPECT_EQ(Run("--rules rules.csv --interval 1 --cycles 2 --log log"), 1);
  const std::string head = R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\t)" + pid + "\t" + namePattern_ +
                           R"(\tHandles: \d\d? > 2; Working Set: \d+ MB > 64 MB; Private Bytes: \d+ MB > 64 MB; )";
  EXPECT_TRUE(std::regex_match(Text("out"),
                               std::regex(head + R"(Threads: 2 > 1\n)" + head + R"(CPU: \d+\.\d% > 0\.1%; Threads: 2 > 1\n)")))
      << Text("out");
  EXPECT_TRUE(
      std::regex_match(Text("log"), std::regex("\xEF\xBB\xBF" + head + R"(Threads: 2 > 1\r\n)" + head + R"(CPU: .*\r\n)")));
  EXPECT_EQ(Text("err"), "");
  // The time of that zone; the hour may have changed meanwhile.
  char hours[2][20] = {};
  const std::time_t local = std::time(nullptr) + 5 * 3600 + 1800;
  for (const int ago : {0, 1}) {
    const std::time_t then = local - 60 * ago;
    std::strftime(hours[ago], sizeof hours[ago], "%Y-%m-%d %H:", std::gmtime(&then));
  }
  EXPECT_TRUE(Text("out").starts_with(hours[0]) || Text("out").starts_with(hours[1])) << Text("out");

  EXPECT_EQ(Run("--rules rules.csv --once --json --metrics metrics"), 1);
  const auto exceeded = [](const char* ceiling, const char* measured, const char* allowed, const char* unit) {
    return std::string(R"(\{"ceiling":")") + ceiling + R"(","measured":)" + measured + R"(,"allowed":)" + allowed +
           R"(,"unit":")" + unit + R"("\})";
  };
  const std::string json =
      R"(\{"time":"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\+05:30","host":"[^"]+","pid":)" + pid + R"(,"process":")" + namePattern_ +
      R"(","rule":7,"pattern":")" + namePattern_ + R"(","exceeded":\[)" + exceeded("handles", R"(\d\d?)", "2", "count") + "," +
      exceeded("working_set", R"(\d{8,})", "67108864", "bytes") + "," +
      exceeded("private_bytes", R"(\d{8,})", "67108864", "bytes") + "," + exceeded("cpu", R"(\d+\.\d)", "0.1", "percent") + "," +
      exceeded("threads", "2", "1", "count") + R"(\]\}\n)";
  EXPECT_TRUE(std::regex_match(Text("out"), std::regex(json))) << Text("out");
  const std::string metrics = Text("metrics");
  for (const std::string& line :
       {"\nvantora_alerts_total{rule=\"7\",line=\"1\",pattern=\"" + name_ + "\",ceiling=\"cpu\"} 1\n",
        "\nvantora_alerts_total{rule=\"8\",line=\"2\",pattern=\"" + name_ + "\",ceiling=\"threads\"} 0\n",
        "\nvantora_processes_over_limit{rule=\"7\",line=\"1\",pattern=\"" + name_ + "\",ceiling=\"threads\"} 1\n",
        std::string("\nvantora_unreadable_processes 0.000000\n")}) {
    EXPECT_NE(metrics.find(line), std::string::npos) << line << metrics;
  }
  EXPECT_FALSE(std::filesystem::exists(File("metrics.tmp")));
  EXPECT_EQ(std::system(("! command -v promtool >/dev/null || promtool check metrics <'" + File("metrics") + "'").c_str()), 0);

  EXPECT_EQ(Run("--rules rules.csv --list"), 1);
  EXPECT_TRUE(std::regex_search(Text("out"), std::regex("^ +NEAR%.*\n *\\d+\\.\\d +" + pid +
                                                        R"( +\d+ +\d+ +\d+ +\d+\.\d +2 +- +-  )" + namePattern_ + "\n")))
      << Text("out");
}

TEST_F(Console, AnswersEachCallWithItsExitCodeAndReason) {
  Write("good.csv", over_);
  Write("quiet.csv", "h\n1,no-such-process,1,2,0.0,0.0,0.0,0,0,0,3,60\n");
  Write("bad.csv", "h\n7,a,yes\n\n8,\",\"b,c\",1,1,2,3,95.04,1,1,1,1,1,9\n9,a,1\n");
  Write("empty.csv", "h\n");
  Write("good.json", "{\"rules\": [\n{\"processPattern\":\"a\"},\n{\"processPattern\":\"\"}]}");
  const struct {
    const char* arguments;
    int exitCode;
    const char* out;  ///< regular expressions
    const char* err;
  } cases[] = {
      {"--rules quiet.csv --once", 0, "", ""},
      {"--rules good.csv --once --exclude 'wa) *'", 0, "", ""},
      {"--once", 0, "[^]*", "vantora-console: no rules in .*rules.csv: watching by the built-in ones\n"},
      {"--rules missing.csv --once", 2, "", "vantora-console: missing.csv: cannot be read\n"},
      {"--rules empty.csv --once", 2, "", "vantora-console: empty.csv: holds no rule\n"},
      {"--rules bad.csv --cycles 1", 0, "", "[^]*bad.csv:2: dropped: the third field, enabled, is no number\n[^]*"},
      {"--rules good.csv --validate", 0, "good.csv: 2 rules\n", ""},
      {"--rules quiet.csv --validate", 0, "quiet.csv: 1 rules\n", ""},
      {"--rules bad.csv --validate", 2, "bad.csv: 2 rules\n",
       "[^]*:2: dropped: [^]*:4: changed: MaxCPU '95.04' is read as 95.0; there are more fields than twelve\n[^]*:5: changed: "
       "MaxHandles is missing and "
       "is read as 0;[^]*"},
      {"--rules good.json --validate", 2, "good.json: 1 rules\n",
       "[^]*good.json:3: dropped: no processPattern, or one that rules.csv cannot carry\n"},
      {"--interval 0", 2, "", "vantora-console: --interval needs SECONDS[^]*"},
      {"--cycles", 2, "", "vantora-console: --cycles needs N[^]*"},
      {"--color pink", 2, "", "vantora-console: --color needs WHEN[^]*"},
      {"--once --cycles 2", 2, "", "vantora-console: --once and --cycles exclude each other\n[^]*"},
      {"rules.csv", 2, "", "vantora-console: unexpected argument 'rules.csv'\n[^]*"},
      {"--version", 0, "vantora-console [0-9.]+\n", ""},
      {"--rules quiet.csv --cycles 1 --verbose", 0, "", ""},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.arguments);
    const int exitCode = Run(each.arguments);
    if (std::string(each.arguments) != "--once") {
      EXPECT_EQ(exitCode, each.exitCode);
    } else {
      EXPECT_NE(exitCode, 2) << "the built-in rules may or may not find something on this machine";
    }
    EXPECT_TRUE(std::regex_match(Text("out"), std::regex(each.out))) << Text("out");
    EXPECT_TRUE(std::regex_match(Text("err"), std::regex(each.err))) << Text("err");
  }
}

TEST_F(Console, EndsAtOnceWhenToldToOrWhenItsReaderHasGone) {
  Write("rules.csv", over_);
  for (const int signal : {SIGINT, SIGTERM}) {
    const pid_t child = ::fork();
    if (child == 0) {
      std::freopen(File("out").c_str(), "w", stdout);
      ::execl(VANTORA_CONSOLE, VANTORA_CONSOLE, "--rules", File("rules.csv").c_str(), "--interval", "3600", nullptr);
      ::_exit(127);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const auto start = std::chrono::steady_clock::now();
    ::kill(child, signal);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(VANTORA_CONSOLE_END_MS));
  }
  EXPECT_EQ(Run("--rules rules.csv --interval 1 | true; true"), 0);
  EXPECT_EQ(Text("err"), "");
}

// What one table gives: the help, the manual page and the pages that people read.
TEST_F(Console, NamesEveryOptionInTheManualAndTheReadme) {
  EXPECT_EQ(Run("--help"), 0);
  const std::string help = Text("out");
  EXPECT_EQ(Run("--man"), 0);
  std::string manual = Text("out");
  std::erase(manual, '\\');
  std::ifstream readmeFile(VANTORA_README);
  const std::string readme((std::istreambuf_iterator<char>(readmeFile)), {});
  const std::regex option(R"(\n  (--[a-z]+))");
  std::size_t options = 0;
  for (std::sregex_iterator found(help.begin(), help.end(), option), end; found != end; ++found, ++options) {
    const std::string name = (*found)[1];
    EXPECT_NE(manual.find(".B " + name), std::string::npos) << name;
    EXPECT_NE(readme.find(name), std::string::npos) << name;
  }
  EXPECT_GE(options, 14u);
}

}  // namespace
