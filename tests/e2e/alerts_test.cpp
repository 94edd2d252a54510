// Alerts of real processes: this test's own process exceeds its ceilings, and what the program then shows and writes is read.

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <filesystem>
#include <regex>

#include "tests/support/program_test.h"

namespace e2e {
namespace {

std::string Narrow(const std::wstring& text) { return {text.begin(), text.end()}; }

/// The executable name under which a rule finds this process.
std::string OwnName() {
  char path[MAX_PATH]{};
  ::GetModuleFileNameA(nullptr, path, MAX_PATH);
  return std::filesystem::path(path).filename().string();
}

/// As the system's process list counts them.
std::string OwnThreadCount() {
  const UniqueHandle snapshot = OwnFileHandle(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof(entry);
  BOOL more = ::Process32FirstW(snapshot.get(), &entry);
  while (more && entry.th32ProcessID != ::GetCurrentProcessId()) more = ::Process32NextW(snapshot.get(), &entry);
  return std::to_string(entry.cntThreads);
}

using Alerts = EndToEndTest;

TEST_F(Alerts, AreShownMergedAndLoggedAsTheirRulesSayUnlessPausedAndReadByTheNextStart) {
  profile_.Set(L"PollIntervalSec", 1);
  profile_.Set(L"NotificationThrottleSec", 2);
  const std::string name = OwnName();
  const std::string pid = std::to_string(::GetCurrentProcessId());
  const std::string threads = "Threads: " + OwnThreadCount() + " > ";
  const std::vector<char> touched(48 * 1'048'576, 'x');
  profile_.WriteRules({"1," + name + ",1,0,10.5,0.0,0.0,0,0,0,1,3600", "5," + name + ",1,0,0.0,0.0,0.0,1,0,0,3,0"});
  int logged = 0;
  {
    const RunningProgram program;
    const std::string process = name + " (PID " + pid + ")";
    const std::string balloon = Narrow(shell_.WaitForBalloon(0));
    const std::string start = "Vantora Alert: " + process + "\nWorking Set: ";
    ASSERT_TRUE(balloon.starts_with(start)) << balloon;
    const int shown = std::stoi(balloon.substr(start.size()));
    EXPECT_EQ(balloon, start + std::to_string(shown) + " MB > 10 MB");
    PROCESS_MEMORY_COUNTERS counters{};
    ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof(counters));
    EXPECT_NEAR(shown, static_cast<int>(counters.WorkingSetSize / 1'048'576), 8);

    const std::wstring merged = shell_.WaitForBalloon(1);
    EXPECT_TRUE(merged.starts_with(L"Vantora: ") && merged.find(L" Alerts\n") != std::wstring::npos) << Narrow(merged);

    // The menu offers what the engine is not doing: a second pause is greyed.
    for (const wchar_t mnemonic : {L'p', L'p'}) program.ChooseFromTrayMenu(mnemonic);
    program.PostToTray(WM_CANCELMODE, 0, 0);
    program.ChooseFromTrayMenu(L'r');
    ASSERT_TRUE(debug_.WaitFor(program.Id(), "Monitoring resumed"));
    EXPECT_EQ(debug_.Count(program.Id(), "Monitoring paused"), 1);
    const std::string alert = "ALERT: PID " + pid + " (" + name + ") Rule ";
    const auto alerts = [&] { return debug_.Count(program.Id(), alert + "5: " + threads + "1"); };
    const int atResume = alerts();
    EXPECT_TRUE(WaitUntil([&] { return alerts() > atResume; }));
    EXPECT_EQ(debug_.Count(program.Id(), alert + "1: Working Set: "), 1) << "in its cooldown";

    ASSERT_TRUE(program.End());
    const std::string log = ReadWholeFile(profile_.LogFile()).value_or("");
    EXPECT_TRUE(log.ends_with("\t" + pid + "\t" + name + "\t" + threads + "1\r\n")) << log;
    logged = static_cast<int>(std::count(log.begin(), log.end(), '\n'));
    EXPECT_NEAR(logged, alerts(), 1) << "an alert that was still in the queue at the end is dropped";
  }

  // Wine tells a process's times only to itself and gives others the asking process's own: the program watches itself.
  profile_.WriteRules({"1,vantora.exe,1,0,0.0,0.0,0.5,0,0,0,1,3600"});
  const std::size_t before = shell_.Calls(L"balloon").size();
  const RunningProgram program;
  std::jthread busy([tray = program.WaitForTray()](const std::stop_token& end) {
    while (!end.stop_requested()) ::SendMessageW(tray, WM_NULL, 0, 0);
  });
  const std::string text = Narrow(shell_.WaitForBalloon(before));
  busy.request_stop();
  const std::string start = "Vantora Alert: vantora.exe \\(PID " + std::to_string(program.Id()) + "\\)\nCPU: ";
  std::smatch percent;
  ASSERT_TRUE(std::regex_match(text, percent, std::regex(start + R"((\d+\.\d)% > 0\.5%)"))) << text;
  EXPECT_TRUE(std::stod(percent[1]) >= 0.5 && std::stod(percent[1]) <= 100.0) << text;
  program.ChooseFromTrayMenu(L'l');
  HWND list = ::GetDlgItem(program.WaitForDialog(IDC_ALERT_LIST), IDC_ALERT_LIST);
  EXPECT_TRUE(WaitUntil([&] { return RowCount(list) == logged + 1; })) << "the log's and the new one";
}

}  // namespace
}  // namespace e2e
