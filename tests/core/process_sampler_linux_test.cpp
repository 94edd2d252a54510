#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "core/process_sampler.h"
#include "platform/event.h"
#include "platform/thread.h"

namespace {

const ProcessEntry* FindEntry(const std::vector<ProcessEntry>& entries, int pid) {
  for (const ProcessEntry& entry : entries) {
    if (entry.pid == static_cast<std::uint32_t>(pid)) return &entry;
  }
  return nullptr;
}

TEST(LinuxSampler, MeasuresTheTestItself) {
  const auto sampler = MakeSystemProcessSampler();
  std::vector<ProcessEntry> entries(3, {1, 2, L"stale"});
  std::uint32_t error = 1;
  ASSERT_TRUE(sampler->ListProcesses(entries, error));
  const ProcessEntry* before = FindEntry(entries, ::getpid());
  ASSERT_NE(before, nullptr);
  EXPECT_EQ(before->name, L"core_test");
  const std::uint32_t threadsBefore = before->threads;

  Event go;
  ASSERT_TRUE(go.Create(Event::Reset::kManual, error));
  Thread thread;
  ASSERT_TRUE(thread.Start([&go] { (void)go.Wait(30'000); }, error));
  ASSERT_TRUE(sampler->ListProcesses(entries, error));
  EXPECT_EQ(FindEntry(entries, ::getpid())->threads, threadsBefore + 1);
  go.Signal();
  EXPECT_TRUE(thread.WaitForEnd(30'000));

  const auto self = sampler->OpenProcess(static_cast<std::uint32_t>(::getpid()));
  ASSERT_NE(self, nullptr);
  EXPECT_TRUE(self->HasFullAccess());
  std::uint32_t handlesBefore = 0;
  std::uint32_t handles = 0;
  ASSERT_TRUE(self->ReadHandleCount(handlesBefore));
  const int extra = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ASSERT_TRUE(self->ReadHandleCount(handles));
  EXPECT_EQ(handles, handlesBefore + 1);
  ::close(extra);

  constexpr std::size_t kBlock = 64u << 20;
  ProcessMemory memoryBefore;
  ProcessMemory memory;
  ASSERT_TRUE(self->ReadMemory(memoryBefore));
  std::vector<char> block(kBlock, 'x');
  ASSERT_TRUE(self->ReadMemory(memory));
  EXPECT_GE(memory.workingSet, memoryBefore.workingSet + kBlock * 3 / 4);
  EXPECT_GE(memory.privateBytes, memoryBefore.privateBytes + kBlock * 3 / 4);
  EXPECT_EQ(block.back(), 'x');
}

TEST(LinuxSampler, TimesAreInTheRecordsUnits) {
  const auto sampler = MakeSystemProcessSampler();
  const auto self = sampler->OpenProcess(static_cast<std::uint32_t>(::getpid()));
  ASSERT_NE(self, nullptr);
  ProcessTimes before;
  ASSERT_TRUE(self->ReadTimes(before));
  timespec used = {};
  const auto usedSeconds = [&] {
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
  };
  const double start = usedSeconds();
  while (usedSeconds() < start + 0.2) {
  }
  ProcessTimes after;
  ASSERT_TRUE(self->ReadTimes(after));
  const auto busy = static_cast<double>(after.kernelTime + after.userTime - before.kernelTime - before.userTime) / 1e7;
  EXPECT_NEAR(busy, 0.2, 0.1);
  EXPECT_EQ(after.creationTime, before.creationTime);
  // Started within the last hour by the wall clock, counted from 1601.
  const auto since1970 = std::chrono::system_clock::now().time_since_epoch();
  const double now = std::chrono::duration<double>(since1970).count() + 11'644'473'600.0;
  const double created = static_cast<double>(after.creationTime) / 1e7;
  EXPECT_GT(created, now - 3600.0);
  EXPECT_LT(created, now + 5.0);
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
  EXPECT_TRUE(process->ReadTimes(times));
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  std::uint32_t handles = 42;
  ProcessMemory memory;
  EXPECT_FALSE(process->ReadTimes(times));
  EXPECT_FALSE(process->ReadMemory(memory));
  EXPECT_FALSE(process->ReadHandleCount(handles));
  EXPECT_EQ(handles, 42u);
  EXPECT_EQ(sampler->OpenProcess(static_cast<std::uint32_t>(child)), nullptr);
}

}  // namespace
