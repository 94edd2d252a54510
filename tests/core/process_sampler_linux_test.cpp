#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/process_sampler.h"

namespace {

TEST(LinuxSampler, CountsOpenFilesAndKnowsNothingOfAProcessThatHasEnded) {
  const auto sampler = MakeSystemProcessSampler();
  const pid_t child = ::fork();
  if (child == 0) {
    ::pause();
    ::_exit(0);
  }
  ASSERT_GT(child, 0);
  const auto self = sampler->OpenProcess(static_cast<std::uint32_t>(::getpid()));
  const auto process = sampler->OpenProcess(static_cast<std::uint32_t>(child));
  ASSERT_TRUE(self != nullptr && process != nullptr);
  std::uint32_t before = 0;
  std::uint32_t handles = 0;
  ASSERT_TRUE(self->ReadHandleCount(before));
  const int extra = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ASSERT_TRUE(self->ReadHandleCount(handles));
  EXPECT_EQ(handles, before + 1);
  ::close(extra);

  ProcessTimes times;
  ProcessMemory memory;
  EXPECT_TRUE(process->ReadTimes(times));
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  EXPECT_FALSE(process->ReadTimes(times));
  EXPECT_FALSE(process->ReadMemory(memory));
  EXPECT_FALSE(process->ReadHandleCount(handles));
  EXPECT_EQ(handles, before + 1) << "untouched";
  EXPECT_EQ(sampler->OpenProcess(static_cast<std::uint32_t>(child)), nullptr);
}

}  // namespace
