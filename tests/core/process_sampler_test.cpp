#include "core/process_sampler.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "platform/event.h"
#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

// The test measures itself, in the units of the records.

namespace {

class SystemSampler : public testing::Test {
 protected:
  /// As the list has it now.
  ProcessEntry OwnEntry() {
    std::vector<ProcessEntry> entries(3, {ownPid, 2, L"stale"});
    std::uint32_t error = 1;
    EXPECT_TRUE(sampler->ListProcesses(entries, error));
    for (const ProcessEntry& entry : entries) {
      if (entry.pid == ownPid) return entry;
    }
    return {};
  }

#ifdef _WIN32
  const std::uint32_t ownPid = ::GetCurrentProcessId();
#else
  const std::uint32_t ownPid = static_cast<std::uint32_t>(::getpid());
#endif
  const std::shared_ptr<ProcessSampler> sampler = MakeSystemProcessSampler();
  const std::unique_ptr<ProcessSampler::Process> self = sampler->OpenProcess(ownPid);
};

TEST_F(SystemSampler, SeesAThreadAndTheMemoryInUse) {
  const ProcessEntry before = OwnEntry();
  EXPECT_TRUE(before.name.starts_with(L"core_test")) << before.name;
  Event go;
  std::uint32_t error = 0;
  ASSERT_TRUE(go.Create(Event::Reset::kManual, error));
  std::thread thread([&go] { (void)go.Wait(30'000); });
  EXPECT_EQ(OwnEntry().threads, before.threads + 1);
  go.Signal();
  thread.join();

  ASSERT_NE(self, nullptr);
  EXPECT_TRUE(self->HasFullAccess());
  constexpr std::size_t kBlock = 64u << 20;
  ProcessMemory memoryBefore;
  ProcessMemory memory;
  ASSERT_TRUE(self->ReadMemory(memoryBefore));
  std::vector<char> block(kBlock, 'x');
  ASSERT_TRUE(self->ReadMemory(memory));
  EXPECT_GE(memory.workingSet, memoryBefore.workingSet + kBlock * 3 / 4);
#ifndef _WIN32  // Wine tells nobody's private bytes
  EXPECT_GE(memory.privateBytes, memoryBefore.privateBytes + kBlock * 3 / 4);
#endif
  EXPECT_EQ(block.back(), 'x');
}

TEST_F(SystemSampler, TellsTheBusyTimeAndTheStart) {
  using Seconds = std::chrono::duration<double>;
  ASSERT_NE(self, nullptr);
  ProcessTimes before;
  ProcessTimes after;
  ASSERT_TRUE(self->ReadTimes(before));
  const auto start = std::chrono::steady_clock::now();
  const auto elapsed = [&] { return Seconds(std::chrono::steady_clock::now() - start).count(); };
  const auto busy = [&] {
    return static_cast<double>(after.kernelTime + after.userTime - before.kernelTime - before.userTime) / 1e7;
  };
  do {
    ASSERT_TRUE(self->ReadTimes(after));
  } while (busy() < 0.2 && elapsed() < 10.0);
  EXPECT_GE(busy(), 0.2);
  // One thread, and the system counts in steps.
  EXPECT_LE(busy(), elapsed() + 0.1);
  EXPECT_EQ(after.creationTime, before.creationTime);
  // Started within the last hour by the wall clock, counted from 1601.
  const double now = Seconds(std::chrono::system_clock::now().time_since_epoch()).count() + 11'644'473'600.0;
  EXPECT_NEAR(static_cast<double>(after.creationTime) / 1e7, now - 1800.0, 1805.0);
}

}  // namespace
