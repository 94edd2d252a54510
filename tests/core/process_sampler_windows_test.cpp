#include <gtest/gtest.h>
#include <windows.h>

#include "core/process_sampler.h"
#include "platform/event.h"
#include "platform/thread.h"

namespace {

const ProcessEntry* FindSelf(const std::vector<ProcessEntry>& entries) {
  for (const ProcessEntry& entry : entries) {
    if (entry.pid == ::GetCurrentProcessId()) return &entry;
  }
  return nullptr;
}

TEST(WindowsSampler, MeasuresTheTestItself) {
  const auto sampler = MakeSystemProcessSampler();
  std::vector<ProcessEntry> entries(200, {1, 2, L"stale"});
  std::uint32_t error = 1;
  ASSERT_TRUE(sampler->ListProcesses(entries, error));
  for (const ProcessEntry& entry : entries) EXPECT_NE(entry.name, L"stale");
  ASSERT_NE(FindSelf(entries), nullptr);
  EXPECT_EQ(FindSelf(entries)->name, L"core_test.exe");
  const std::uint32_t threadsBefore = FindSelf(entries)->threads;
  Event go;
  ASSERT_TRUE(go.Create(Event::Reset::kManual, error));
  Thread thread;
  ASSERT_TRUE(thread.Start([&go] { (void)go.Wait(30'000); }, error));
  ASSERT_TRUE(sampler->ListProcesses(entries, error));
  EXPECT_EQ(FindSelf(entries)->threads, threadsBefore + 1);
  go.Signal();
  EXPECT_TRUE(thread.WaitForEnd(30'000));

  const auto self = sampler->OpenProcess(::GetCurrentProcessId());
  ASSERT_NE(self, nullptr);
  EXPECT_TRUE(self->HasFullAccess());
  constexpr std::size_t kBlock = 64u << 20;
  ProcessMemory before;
  ProcessMemory memory;
  ASSERT_TRUE(self->ReadMemory(before));
  std::vector<char> block(kBlock, 'x');
  ASSERT_TRUE(self->ReadMemory(memory));
  EXPECT_GE(memory.workingSet, before.workingSet + kBlock * 3 / 4);
  EXPECT_EQ(block.back(), 'x');
  std::uint32_t handles = 0;
  EXPECT_TRUE(self->ReadHandleCount(handles));
}

TEST(WindowsSampler, TimesAreInTheRecordsUnits) {
  const auto self = MakeSystemProcessSampler()->OpenProcess(::GetCurrentProcessId());
  ASSERT_NE(self, nullptr);
  ProcessTimes before;
  ProcessTimes after;
  ASSERT_TRUE(self->ReadTimes(before));
  const auto busy = [&] { return after.kernelTime + after.userTime - before.kernelTime - before.userTime; };
  const std::uint64_t limit = ::GetTickCount64() + 30'000;
  do {
    ASSERT_TRUE(self->ReadTimes(after));
  } while (busy() < 1'000'000 && ::GetTickCount64() < limit);
  EXPECT_GE(busy(), 1'000'000u);
  EXPECT_EQ(after.creationTime, before.creationTime);
  FILETIME now = {};
  ::GetSystemTimeAsFileTime(&now);
  const std::uint64_t now100ns = (std::uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime;
  EXPECT_GT(after.creationTime, now100ns - 3600ull * 10'000'000);
  EXPECT_LE(after.creationTime, now100ns + 5ull * 10'000'000);
}

TEST(WindowsSampler, WhatIsNotThereCannotBeOpened) { EXPECT_EQ(MakeSystemProcessSampler()->OpenProcess(0xFFFFFFF0), nullptr); }

TEST(WindowsSampler, MachineHasProcessors) { EXPECT_EQ(SystemProcessorCount(), ::GetActiveProcessorCount(ALL_PROCESSOR_GROUPS)); }

}  // namespace
