#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>

#include "core/process_sampler.h"

// The other counters are measured through the console companion, the Windows sampler through the built program's alerts.

namespace {

TEST(LinuxSampler, TellsTheBusyTimeAndTheStart) {
  const auto self = MakeSystemProcessSampler()->OpenProcess(static_cast<std::uint32_t>(::getpid()));
  ASSERT_NE(self, nullptr);
  ProcessTimes before;
  ProcessTimes after;
  ASSERT_TRUE(self->ReadTimes(before));
  const std::clock_t start = std::clock();
  while (std::clock() < start + CLOCKS_PER_SEC / 5) {
  }
  ASSERT_TRUE(self->ReadTimes(after));
  EXPECT_NEAR(static_cast<double>(after.kernelTime + after.userTime - before.kernelTime - before.userTime) / 1e7, 0.2, 0.1);
  EXPECT_EQ(after.creationTime, before.creationTime);
  // Started within the last hour by the wall clock, counted from 1601.
  const double now = static_cast<double>(std::time(nullptr)) + 11'644'473'600.0;
  EXPECT_NEAR(static_cast<double>(after.creationTime) / 1e7, now - 1800.0, 1805.0);
}

TEST(LinuxSampler, AnOpenedProcessThatEndsGivesNothingMore) {
  const auto sampler = MakeSystemProcessSampler();
  const pid_t child = ::fork();
  if (child == 0) {
    ::pause();
    ::_exit(0);
  }
  ASSERT_GT(child, 0);
  const auto process = sampler->OpenProcess(static_cast<std::uint32_t>(child));
  ASSERT_NE(process, nullptr);
  ProcessTimes times;
  ProcessMemory memory;
  std::uint32_t handles = 42;
  EXPECT_TRUE(process->ReadTimes(times));
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  EXPECT_FALSE(process->ReadTimes(times) || process->ReadMemory(memory) || process->ReadHandleCount(handles));
  EXPECT_EQ(handles, 42u);
  EXPECT_EQ(sampler->OpenProcess(static_cast<std::uint32_t>(child)), nullptr);
}

}  // namespace
