#include "platform/thread.h"

#include <gtest/gtest.h>

#include <memory>

#include "platform/event.h"

namespace {

constexpr std::uint32_t kLongMs = 30'000;

std::shared_ptr<Event> MakeEvent(Event::Reset reset) {
  auto event = std::make_shared<Event>();
  EXPECT_EQ(event->Wait(kLongMs), WaitResult::kFailed) << "there is none yet";
  std::uint32_t error = 0;
  EXPECT_TRUE(event->Create(reset, error));
  return event;
}

TEST(Thread, EndIsWaitedForOnlySoLongAndReleasedAndDetachedOnesGoOn) {
  const auto go = MakeEvent(Event::Reset::kManual);
  const auto done = MakeEvent(Event::Reset::kAuto);
  const auto routine = [go, done] {
    (void)go->Wait(kLongMs);
    done->Signal();
  };
  const auto references = go.use_count();
  std::uint32_t error = 0;
  Thread thread;
  EXPECT_TRUE(thread.WaitForEnd(0));
  ASSERT_TRUE(thread.Start(routine, error));
  EXPECT_FALSE(thread.WaitForEnd(10));
  go->Signal();
  EXPECT_TRUE(thread.WaitForEnd(kLongMs));
  EXPECT_EQ(go.use_count(), references) << "the end is told only when nothing of the routine is left";
  EXPECT_EQ(go->Wait(0), WaitResult::kSignaled) << "a manual one stays";
  EXPECT_EQ(done->Wait(0), WaitResult::kSignaled);
  EXPECT_EQ(done->Wait(0), WaitResult::kTimedOut) << "an automatic one is taken once";

  for (const bool detached : {false, true}) {
    go->Clear();
    ASSERT_TRUE(detached ? StartDetachedThread(routine) : Thread().Start(routine, error));
    EXPECT_EQ(done->Wait(10), WaitResult::kTimedOut);
    go->Signal();
    EXPECT_EQ(done->Wait(kLongMs), WaitResult::kSignaled);
  }
}

}  // namespace
