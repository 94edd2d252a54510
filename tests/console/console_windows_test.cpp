// The console companion's main cases once more in its Windows build; the host's tests go into the rest.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <regex>
#include <string>

#include "tests/support/throwaway_folder.h"

namespace {

TEST(ConsoleOnWindows, ReportsAProcessAndAnswersByItsExitCode) {
  const ThrowawayFolder folder;
  ThrowawayFolder::Write(folder.Path("over.csv"), "h\n7,CONSOLE_TEST.exe,1,0,1.0,0.0,0.0,0,0,0,0,0\n");
  ThrowawayFolder::Write(folder.Path("quiet.csv"), "h\n7,no-such.exe,1,1,0.0,0.0,0.0,0,0,0,0,0\n");
  ThrowawayFolder::Write(folder.Path("bad.csv"), "h\n7,a,yes\n");
  const std::string pid = std::to_string(::GetCurrentProcessId());
  const std::string figures = R"(Working Set: \d+ MB > 1 MB)";
  const struct {
    const wchar_t* arguments;
    int exitCode;
    std::string out;
    std::string err;
  } cases[] = {
      {L"--rules over.csv --cycles 1 --log log", 1,
       R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\t)" + pid + "\tconsole_test.exe\t" + figures + "\n", ""},
      {L"--rules over.csv --once --json --metrics metrics", 1,
       R"(\{"time":"[^"]+","host":"[^"]+","pid":)" + pid +
           R"(,"process":"console_test.exe","rule":7,"pattern":"CONSOLE_TEST.exe",.*\}\n)",
       ""},
      {L"--rules over.csv --list", 1, "[^]*\n *\\d+\\.\\d +" + pid + R"([ 0-9.]+console_test\.exe\n)", ""},
      {L"--rules quiet.csv --once", 0, "", ""},
      {L"--rules bad.csv --validate", 2, "bad.csv: 0 rules\n",
       "[^]*bad.csv:2: dropped: the third field, enabled, is no number[^]*"},
      {L"--rules missing.csv", 2, "", "[^]*missing.csv: cannot be read[^]*"},
      {L"--nonsense", 2, "", "[^]*unexpected argument '--nonsense'[^]*"},
  };
  wchar_t program[MAX_PATH] = {};
  ::GetFullPathNameW(VANTORA_CONSOLE, MAX_PATH, program, nullptr);
  ASSERT_TRUE(::SetCurrentDirectoryW(folder.Path("").c_str()));
  for (const auto& each : cases) {
    SCOPED_TRACE(testing::PrintToString(each.arguments));
    EXPECT_EQ(::_wsystem((std::wstring(L"\"\"") + program + L"\" " + each.arguments + L" >out 2>err\"").c_str()), each.exitCode);
    const std::string out = ThrowawayFolder::Read(folder.Path("out"));
    const std::string err = ThrowawayFolder::Read(folder.Path("err"));
    EXPECT_TRUE(std::regex_match(out, std::regex(each.out))) << out;
    EXPECT_TRUE(std::regex_match(err, std::regex(each.err))) << err;
  }
  EXPECT_TRUE(std::regex_search(ThrowawayFolder::Read(folder.Path("log")), std::regex("^\xEF\xBB\xBF[^]*MB\r\n$")));
  EXPECT_NE(ThrowawayFolder::Read(folder.Path("metrics")).find("ceiling=\"working_set\"} 1\n"), std::string::npos);
  ::SetCurrentDirectoryW(L"C:\\");
}

}  // namespace
