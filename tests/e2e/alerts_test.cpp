// Alerts of real processes: this test's own process exceeds a ceiling, and what the program then shows and writes is read.

#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <regex>

#include "res/resource.h"
#include "tests/e2e/fixture.h"
#include "tests/e2e/process_load.h"

namespace e2e {
namespace {

std::string Narrow(const std::wstring& text) {
  std::string narrow;
  for (const wchar_t c : text) narrow += static_cast<char>(c);
  return narrow;
}

std::string LocalTimeText() {
  SYSTEMTIME now{};
  ::GetLocalTime(&now);
  char text[32];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d", now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute,
                now.wSecond);
  return text;
}

/// The lines of a text whose every line ends with CR LF; empty when one does not.
std::vector<std::string> CrLfLines(std::string text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = text.find("\r\n");
    if (end == std::string::npos || text.find('\n') != end + 1) return {};
    lines.push_back(text.substr(0, end));
    text.erase(0, end + 2);
  }
  return lines;
}

class Alerts : public EndToEndTest {
 protected:
  Alerts() {
    profile_.Set(L"PollIntervalSec", 1);
    profile_.Set(L"NotificationThrottleSec", 1);
  }

  const std::string pid_ = std::to_string(::GetCurrentProcessId());
  const std::string single_title_ = "Vantora Alert: " + OwnName() + " (PID " + pid_ + ")";
  const std::string line_head_ = OwnName() + " (PID " + pid_ + "): ";
};

TEST_F(Alerts, AThreadCeilingBringsOneBalloonWithTheProcessAsTitleAndTheViolationAsText) {
  profile_.WriteRules({"1," + OwnName() + ",1,0,0.0,0.0,0.0,1,0,0,1,3600"});
  const RunningProgram program;
  const auto balloon = shell_.WaitForBalloon(0);
  ASSERT_TRUE(balloon);
  const std::string violation = "Threads: " + std::to_string(OwnThreadCount()) + " > 1";
  EXPECT_EQ(Narrow(balloon->infoTitle), single_title_);
  EXPECT_EQ(Narrow(balloon->info), violation);
  EXPECT_EQ(balloon->flags, static_cast<UINT>(NIF_INFO));
  EXPECT_EQ(balloon->infoFlags, static_cast<UINT>(NIIF_NONE));
  EXPECT_EQ(balloon->timeoutMs, 10'000u);
  EXPECT_EQ(balloon->window, program.WaitForTray());
  EXPECT_EQ(balloon->id, shell_.Calls().front().id);
  EXPECT_TRUE(balloon->accepted);
  EXPECT_EQ(debug_.Count(program.Id(), "ALERT: PID " + pid_ + " (" + OwnName() + ") Rule 1: " + violation), 1u);
  // The cooldown holds the next cycles' alerts back.
  EXPECT_TRUE(NeverWithin(2'500, [&] { return debug_.Count(program.Id(), "ALERT:") > 1; }));
  EXPECT_EQ(ReadFileBytes(profile_.LogFile()), std::nullopt);
  EXPECT_TRUE(program.End());
}

TEST_F(Alerts, AWorkingSetCeilingIsMeasuredInTheProcess) {
  const TouchedMemory memory(48);
  profile_.WriteRules({"1," + OwnName() + ",1,0,10.5,0.0,0.0,0,0,0,1,3600"});
  const RunningProgram program;
  const auto balloon = shell_.WaitForBalloon(0);
  ASSERT_TRUE(balloon);
  unsigned shown = 0;
  ASSERT_EQ(std::sscanf(Narrow(balloon->info).c_str(), "Working Set: %u MB > 10 MB", &shown), 1) << Narrow(balloon->info);
  EXPECT_TRUE(Narrow(balloon->info).ends_with(" MB > 10 MB"));
  EXPECT_GE(shown, memory.SizeMb());
  EXPECT_NEAR(shown, OwnWorkingSetMb(), 8);
  EXPECT_TRUE(program.End());
}

TEST_F(Alerts, ACpuCeilingIsMeasuredFromOneCycleToTheNext) {
  // Wine tells a process's times only to itself and gives others the asking process's own: the program watches itself.
  profile_.WriteRules({"1,vantora.exe,1,0,0.0,0.0,0.5,0,0,0,1,3600"});
  const RunningProgram program;
  const BusyWindow busy(program.WaitForTray());
  const auto balloon = shell_.WaitForBalloon(0);
  ASSERT_TRUE(balloon);
  EXPECT_EQ(Narrow(balloon->infoTitle), "Vantora Alert: vantora.exe (PID " + std::to_string(program.Id()) + ")");
  const std::string text = Narrow(balloon->info);
  EXPECT_TRUE(std::regex_match(text, std::regex(R"(CPU: \d+\.\d% > 0\.5%)"))) << text;
  const double percent = std::stod(text.substr(5));
  EXPECT_GE(percent, 0.5);
  EXPECT_LE(percent, 100.0);
  EXPECT_TRUE(program.End());
}

TEST_F(Alerts, AlertsInsideTheThrottleWindowAreMergedIntoTheNextBalloon) {
  profile_.Set(L"NotificationThrottleSec", 3);
  profile_.WriteRules({"1," + OwnName() + ",1,0,0.0,0.0,0.0,1,0,0,1,0", "2," + OwnName() + ",1,0,0.0,0.0,0.0,2,0,0,1,0"});
  const RunningProgram program;
  const auto second = shell_.WaitForBalloon(1);
  ASSERT_TRUE(second);
  const auto first = shell_.Balloons().front();
  const std::string count = std::to_string(OwnThreadCount());
  EXPECT_EQ(Narrow(first.infoTitle), single_title_);
  EXPECT_EQ(Narrow(first.info), "Threads: " + count + " > 1");
  // Rule 2's alert of the first cycle came right after the first balloon; then both rules alert in every cycle.
  std::string text;
  unsigned merged = 0;
  ASSERT_EQ(std::sscanf(Narrow(second->infoTitle).c_str(), "Vantora: %u Alerts", &merged), 1) << Narrow(second->infoTitle);
  EXPECT_EQ(Narrow(second->infoTitle), "Vantora: " + std::to_string(merged) + " Alerts");
  EXPECT_GE(merged, 4u);
  EXPECT_LE(merged, 10u);
  for (unsigned i = 0; i < merged; ++i) {
    text += (i == 0 ? "" : "\n") + line_head_ + "Threads: " + count + " > " + (i % 2 == 0 ? "2" : "1");
  }
  EXPECT_EQ(Narrow(second->info), text.substr(0, 255));
  EXPECT_TRUE(program.End());
}

TEST_F(Alerts, TheLogIsWrittenByteForByteAndReadBackAtTheNextStart) {
  profile_.WriteRules({"5," + OwnName() + ",1,0,0.0,0.0,0.0,1,0,0,2,0"});
  const std::string before = LocalTimeText();
  std::vector<std::string> lines;
  {
    const RunningProgram program;
    ASSERT_TRUE(WaitUntil([&] { return debug_.Count(program.Id(), "ALERT:") >= 3; }));
    ASSERT_TRUE(program.End());
    EXPECT_TRUE(shell_.Balloons().empty());
    const std::string after = LocalTimeText();
    const auto bytes = ReadFileBytes(profile_.LogFile());
    ASSERT_TRUE(bytes);
    ASSERT_EQ(bytes->substr(0, 3), kMark);
    lines = CrLfLines(bytes->substr(3));
    // An alert that was still in the queue at the end is dropped.
    ASSERT_GE(lines.size(), 2u);
    EXPECT_NEAR(static_cast<double>(lines.size()), static_cast<double>(debug_.Count(program.Id(), "ALERT:")), 1.0);
    const std::string tail = "\t" + pid_ + "\t" + OwnName() + "\tThreads: " + std::to_string(OwnThreadCount()) + " > 1";
    for (const std::string& line : lines) {
      EXPECT_EQ(line.substr(19), tail);
      EXPECT_TRUE(before <= line.substr(0, 19) && line.substr(0, 19) <= after) << line;
    }
  }
  profile_.WriteRules({});
  const RunningProgram program;
  ASSERT_TRUE(program.ChooseFromTrayMenu(L'l'));
  HWND window = WaitForResult([&] {
    HWND dialog = program.FindVisibleWindow(kDialogClass, nullptr);
    return dialog != nullptr && ::GetDlgItem(dialog, IDC_ALERT_LIST) != nullptr ? dialog : nullptr;
  });
  ASSERT_NE(window, nullptr);
  HWND list = ::GetDlgItem(window, IDC_ALERT_LIST);
  EXPECT_TRUE(WaitUntil([&] { return ListRowCount(list) == static_cast<int>(lines.size()); }));
  EXPECT_TRUE(program.End());
}

}  // namespace
}  // namespace e2e
