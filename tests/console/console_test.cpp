// Runs the built console companion in the shell against this test's own process, as golden/console tells for each system:
// "name=text" makes a file, "$ command" is run, and below it stand its exit code and, as regular expressions, the whole of what
// is then in a file. Where out and err are not named, there is nothing in them. <pid> and <name> are this process's.

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#ifdef _WIN32
#include <process.h>
#else
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include "tests/support/throwaway_folder.h"
#include "tests/tables/table_text.h"

namespace {

#ifdef _WIN32
int Shell(const std::string& command) { return std::system((command + " >out 2>err").c_str()); }
void Set(const std::string& name, const std::string& value) { ::_putenv((name + "=" + value).c_str()); }
std::string Name() { return "console_test.exe"; }
constexpr char kPathSeparator = ';';
#else
int Shell(const std::string& command) {
  const int status = std::system(("{ " + command + "; } >out 2>err").c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
void Set(const std::string& name, const std::string& value) { ::setenv(name.c_str(), value.c_str(), 1); }
/// One that no other process on the machine has, and that ends as the kernel's own mark after a name does.
std::string Name() {
  const std::string name = "wa) \xC3\xA4 " + std::to_string(::getpid());
  ::prctl(PR_SET_NAME, name.c_str());
  return name;
}
constexpr char kPathSeparator = ':';
#endif

TEST(Console, AnswersAsTold) {
  const ThrowawayFolder folder;
  const auto start = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path(""));
  Set("HOME", std::filesystem::current_path().string());
  Set("XDG_CONFIG_HOME", "");
  Set("TZ", "IST-5:30");
  Set("README", VANTORA_README);
  Set("PATH", std::filesystem::path(VANTORA_CONSOLE).parent_path().string() + kPathSeparator + std::getenv("PATH"));
  // What the rules look for.
  const std::string name = Name();
  const std::vector<char> block(64U << 20, 'x');
  const std::jthread busy([](const std::stop_token& end) {
    while (!end.stop_requested()) {
    }
  });

  std::ifstream transcript(VANTORA_TRANSCRIPT);
  std::string command;
  int exitCode = 0;
  std::map<std::string, std::string> expected;
  const auto check = [&] {
    for (const auto& [file, pattern] : expected) {
      const std::string text = ThrowawayFolder::Read(folder.Path(file));
      EXPECT_TRUE(std::regex_match(text, std::regex(pattern))) << command << "\n" << file << ": " << text;
    }
  };
  int commands = 0;
  for (std::string line; std::getline(transcript, line);) {
    if (line.empty() || line.starts_with("# ")) continue;
    line = Replace(line, "<pid>", std::to_string(::getpid()));
    if (line.starts_with("$ ")) {
      check();
      command = Replace(line.substr(2), "<name>", name);
      exitCode = Shell(command);
      expected = {{"out", ""}, {"err", ""}};
      ++commands;
    } else if (line.starts_with("= ")) {
      EXPECT_TRUE(std::regex_match(std::to_string(exitCode), std::regex(line.substr(2)))) << command << ": " << exitCode;
    } else if (const std::size_t colon = line.find(": "), equals = line.find('='); equals < colon) {
      ThrowawayFolder::Write(folder.Path(line.substr(0, equals)),
                             Replace(Replace(line.substr(equals + 1), "\\n", "\n"), "<name>", name));
    } else {
      expected[line.substr(0, colon)] = Replace(line.substr(colon + 2), "<name>", Replace(name, ")", "\\)"));
    }
  }
  check();
  EXPECT_GT(commands, 5);
  std::filesystem::current_path(start);
}

}  // namespace
