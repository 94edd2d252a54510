// Alerts of real processes: this test's own process exceeds a ceiling, and what the program then shows and writes is read.

#include <windows.h>

#include <psapi.h>
#include <shellapi.h>
#include <tlhelp32.h>

#include <cstdio>
#include <filesystem>
#include <regex>

#include "res/resource.h"
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

class Alerts : public EndToEndTest {
 protected:
  Alerts() {
    profile_.Set(L"PollIntervalSec", 1);
    profile_.Set(L"NotificationThrottleSec", 2);
  }

  /// The number of lines in alerts.log, each of which ends with CR LF and is an alert of this process over its thread ceiling.
  int ExpectThreadAlertsInLog() const {
    const std::string bytes = ReadWholeFile(profile_.LogFile()).value_or("");
    EXPECT_EQ(bytes.substr(0, 3), "\xEF\xBB\xBF");
    const std::string tail = "\t" + pid_ + "\t" + OwnName() + "\tThreads: " + OwnThreadCount() + " > 1\r\n";
    int lines = 0;
    for (std::size_t at = 3; at < bytes.size(); at += 19 + tail.size(), ++lines) {
      EXPECT_TRUE(std::regex_match(bytes.substr(at, 19), std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)"))) << bytes;
      EXPECT_EQ(bytes.substr(at + 19, tail.size()), tail);
    }
    return lines;
  }
  void ExpectSingleBalloon(const NotifyCall& balloon, const RunningProgram& program, const std::string& violation) const {
    EXPECT_EQ(Narrow(balloon.infoTitle), "Vantora Alert: " + OwnName() + " (PID " + pid_ + ")");
    EXPECT_EQ(Narrow(balloon.info), violation);
    EXPECT_EQ(balloon.flags, static_cast<UINT>(NIF_INFO));
    EXPECT_EQ(balloon.infoFlags, static_cast<UINT>(NIIF_NONE));
    EXPECT_EQ(balloon.timeoutMs, 10'000u);
    EXPECT_EQ(balloon.Window(), program.WaitForTray());
    EXPECT_EQ(balloon.id, shell_.Calls(NIM_ADD).front().id);
    EXPECT_TRUE(balloon.accepted);
  }

  const std::string pid_ = std::to_string(::GetCurrentProcessId());
};

TEST_F(Alerts, AWorkingSetShowsOneBalloonInItsCooldownAndTheLogIsWrittenAndReadBack) {
  const std::vector<char> touched(48 * 1'048'576, 'x');
  profile_.WriteRules({"1," + OwnName() + ",1,0,10.5,0.0,0.0,0,0,0,1,3600", "5," + OwnName() + ",1,0,0.0,0.0,0.0,1,0,0,2,0"});
  int logged = 0;
  {
    const RunningProgram program;
    const auto balloon = shell_.WaitForBalloon(0);
    ASSERT_TRUE(balloon);
    PROCESS_MEMORY_COUNTERS counters{};
    ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof(counters));
    unsigned shown = 0;
    ASSERT_EQ(std::sscanf(Narrow(balloon->info).c_str(), "Working Set: %u MB", &shown), 1) << Narrow(balloon->info);
    EXPECT_GE(shown, 48u);
    EXPECT_NEAR(shown, static_cast<unsigned>(counters.WorkingSetSize / 1'048'576), 8);
    ExpectSingleBalloon(*balloon, program, "Working Set: " + std::to_string(shown) + " MB > 10 MB");

    const std::string alert = "ALERT: PID " + pid_ + " (" + OwnName() + ") Rule ";
    ASSERT_TRUE(debug_.WaitFor(program.Id(), alert + "5: Threads: " + OwnThreadCount() + " > 1", 3));
    EXPECT_EQ(debug_.Count(program.Id(), alert + "1: Working Set: "), 1u);
    ASSERT_TRUE(program.End());
    EXPECT_EQ(shell_.Balloons().size(), 1u);
    logged = ExpectThreadAlertsInLog();
    ASSERT_GE(logged, 2);
    // An alert that was still in the queue at the end is dropped.
    EXPECT_NEAR(logged, static_cast<int>(debug_.Count(program.Id(), alert + "5")), 1);
  }
  profile_.WriteRules({});
  const RunningProgram program;
  program.ChooseFromTrayMenu(L'l');
  HWND window = program.WaitForDialog(IDC_ALERT_LIST);
  ASSERT_NE(window, nullptr);
  EXPECT_TRUE(WaitUntil([&] { return RowCount(::GetDlgItem(window, IDC_ALERT_LIST)) == logged; }));
  EXPECT_TRUE(program.End());
}

TEST_F(Alerts, ACpuCeilingIsMeasuredFromOneCycleToTheNext) {
  // Wine tells a process's times only to itself and gives others the asking process's own: the program watches itself.
  profile_.WriteRules({"1,vantora.exe,1,0,0.0,0.0,0.5,0,0,0,1,3600"});
  const RunningProgram program;
  const std::jthread busy([tray = program.WaitForTray()](const std::stop_token& end) {
    while (!end.stop_requested()) ::SendMessageW(tray, WM_NULL, 0, 0);
  });
  const auto balloon = shell_.WaitForBalloon(0);
  ASSERT_TRUE(balloon);
  EXPECT_EQ(Narrow(balloon->infoTitle), "Vantora Alert: vantora.exe (PID " + std::to_string(program.Id()) + ")");
  const std::string text = Narrow(balloon->info);
  ASSERT_TRUE(std::regex_match(text, std::regex(R"(CPU: \d+\.\d% > 0\.5%)"))) << text;
  EXPECT_GE(std::stod(text.substr(5)), 0.5);
  EXPECT_LE(std::stod(text.substr(5)), 100.0);
}

TEST_F(Alerts, AreMergedWithinTheThrottleWindowAndStopWhilePaused) {
  profile_.WriteRules({"1," + OwnName() + ",1,0,0.0,0.0,0.0,1,0,0,1,0", "2," + OwnName() + ",1,0,0.0,0.0,0.0,2,0,0,1,0"});
  const RunningProgram program;
  const auto second = shell_.WaitForBalloon(1);
  ASSERT_TRUE(second);
  const std::string violation = "Threads: " + OwnThreadCount() + " > ";
  ExpectSingleBalloon(shell_.Balloons().front(), program, violation + "1");
  // Rule 2's alert of the first cycle came right after the first balloon; then both rules alert in every cycle.
  unsigned merged = 0;
  ASSERT_EQ(std::sscanf(Narrow(second->infoTitle).c_str(), "Vantora: %u Alerts", &merged), 1) << Narrow(second->infoTitle);
  EXPECT_EQ(Narrow(second->infoTitle), "Vantora: " + std::to_string(merged) + " Alerts");
  EXPECT_TRUE(merged >= 4 && merged <= 8) << merged;
  std::string text;
  for (unsigned i = 0; i < merged; ++i) {
    text += (i == 0 ? "" : "\n") + OwnName() + " (PID " + pid_ + "): " + violation + (i % 2 == 0 ? "2" : "1");
  }
  EXPECT_EQ(Narrow(second->info), text.substr(0, 255));

  const auto alerts = [&] { return debug_.Count(program.Id(), "ALERT:"); };
  program.ChooseFromTrayMenu(L'p');
  ASSERT_TRUE(debug_.WaitFor(program.Id(), "Monitoring paused"));
  const std::size_t atPause = alerts();
  program.ChooseFromTrayMenu(L'p');  // greyed now
  EXPECT_TRUE(NeverWithin(2'000, [&] { return alerts() > atPause + 2; })) << "a cycle under way may still end";
  EXPECT_EQ(debug_.Count(program.Id(), "Monitoring paused"), 1u);
  program.PostToTray(WM_CANCELMODE, 0, 0);

  program.ChooseFromTrayMenu(L'r');
  ASSERT_TRUE(debug_.WaitFor(program.Id(), "Monitoring resumed"));
  const std::size_t atResume = alerts();
  EXPECT_TRUE(WaitUntil([&] { return alerts() > atResume; }));
  EXPECT_TRUE(program.End());
}

}  // namespace
}  // namespace e2e
