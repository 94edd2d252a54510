#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ctime>

#include "core/process_sampler.h"

// The other counters are measured through the console companion, the Windows sampler through the built program's alerts.

namespace {

class LinuxSampler : public testing::Test {
 protected:
  /// The process as the list has it now; null when it is not there.
  const ProcessEntry* List(pid_t pid) {
    std::uint32_t error = 0;
    EXPECT_TRUE(sampler_->ListProcesses(entries_, error));
    const auto found = std::ranges::find(entries_, static_cast<std::uint32_t>(pid), &ProcessEntry::pid);
    return found != entries_.end() ? &*found : nullptr;
  }

  std::shared_ptr<ProcessSampler> sampler_ = MakeSystemProcessSampler();
  std::vector<ProcessEntry> entries_;
};

TEST_F(LinuxSampler, TellsNameBusyTimeAndStart) {
  const ProcessEntry before = *List(::getpid());
  EXPECT_EQ(before.name, L"portable_test");
  const std::clock_t start = std::clock();
  while (std::clock() < start + CLOCKS_PER_SEC / 5) {
  }
  const ProcessEntry after = *List(::getpid());
  EXPECT_NEAR(static_cast<double>(after.kernelTime + after.userTime - before.kernelTime - before.userTime) / 1e7, 0.2, 0.1);
  EXPECT_EQ(after.creationTime, before.creationTime);
  // Started within the last hour by the wall clock, counted from 1601.
  const double now = static_cast<double>(std::time(nullptr)) + 11'644'473'600.0;
  EXPECT_NEAR(static_cast<double>(after.creationTime) / 1e7, now - 1800.0, 1805.0);
}

TEST_F(LinuxSampler, ANameThatItsProcessMadeUpIsTakenAsItIs) {
  for (const auto& [made, shown] : {std::pair{"a) b", L"a) b"}, {"fifteen bytes x", L"fifteen bytes x"}, {"\xC3\xA4", L"ä"}}) {
    ::prctl(PR_SET_NAME, made);
    EXPECT_EQ(List(::getpid())->name, shown);
  }
  ::prctl(PR_SET_NAME, "portable_test");
}

TEST_F(LinuxSampler, AProcessThatHasEndedGivesNothingMore) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::pause();
    ::_exit(0);
  }
  ASSERT_GT(child, 0);
  const ProcessEntry entry = *List(child);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  ProcessMetrics metrics;
  metrics.handles = 42;
  metrics.privateBytes = 43;
  sampler_->ReadCounters(entry, kWantHandles | kWantPrivateBytes, metrics);
  EXPECT_EQ(metrics.handles, 42u);
  EXPECT_EQ(metrics.privateBytes, 43u);
  EXPECT_EQ(List(child), nullptr);
}

}  // namespace
