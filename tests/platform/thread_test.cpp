#include "platform/thread.h"

#include <gtest/gtest.h>

#include <memory>

#include "platform/clock.h"
#include "platform/event.h"

namespace {

constexpr std::uint32_t kLongMs = 30'000;

Event MakeEvent(Event::Reset reset) {
  Event event;
  std::uint32_t error = 0;
  EXPECT_TRUE(event.Create(reset, error));
  return event;
}

TEST(Event, ManualStaysSignalledAndAutoIsTakenOnceAndAnEmptyOneFails) {
  Event event;
  event.Signal();
  EXPECT_FALSE(event.IsOpen());
  EXPECT_EQ(event.Wait(kLongMs), WaitResult::kFailed);
  event = MakeEvent(Event::Reset::kManual);
  EXPECT_EQ(event.Wait(0), WaitResult::kTimedOut);
  event.Signal();
  EXPECT_EQ(event.Wait(kLongMs), WaitResult::kSignaled);
  EXPECT_EQ(event.Wait(0), WaitResult::kSignaled);
  event.Clear();
  EXPECT_EQ(event.Wait(0), WaitResult::kTimedOut);
  event = MakeEvent(Event::Reset::kAuto);
  event.Signal();
  EXPECT_EQ(event.Wait(kLongMs), WaitResult::kSignaled);
  EXPECT_EQ(event.Wait(0), WaitResult::kTimedOut);
}

TEST(Thread, EndIsWaitedForOnlySoLongAndReleasedAndDetachedOnesGoOn) {
  const auto go = std::make_shared<Event>(MakeEvent(Event::Reset::kAuto));
  const auto done = std::make_shared<Event>(MakeEvent(Event::Reset::kAuto));
  const auto routine = [go, done] {
    (void)go->Wait(kLongMs);
    done->Signal();
  };
  const auto references = go.use_count();
  Thread thread;
  EXPECT_TRUE(thread.WaitForEnd(0));
  std::uint32_t error = 0;
  ASSERT_TRUE(thread.Start(routine, error));
  thread.SetIdlePriority();
  EXPECT_NE(thread.Id(), 0u);
  EXPECT_FALSE(thread.WaitForEnd(10));
  go->Signal();
  EXPECT_TRUE(thread.WaitForEnd(kLongMs));
  EXPECT_EQ(go.use_count(), references) << "the end is told only when nothing of the routine is left";
  EXPECT_EQ(done->Wait(0), WaitResult::kSignaled);
  thread.Release();
  EXPECT_FALSE(thread.IsStarted());

  ASSERT_TRUE(Thread().Start(routine, error));
  go->Signal();
  EXPECT_EQ(done->Wait(kLongMs), WaitResult::kSignaled);
  ASSERT_TRUE(StartDetachedThread(routine));
  go->Signal();
  EXPECT_EQ(done->Wait(kLongMs), WaitResult::kSignaled);
}

TEST(SystemClock, TicksAgreeAndTheDateIsConsistent) {
  Clock& clock = SystemClock();
  const std::uint64_t before = clock.TickMs();
  EXPECT_LE(clock.Tick32Ms() - static_cast<std::uint32_t>(before), 60'000u);
  Event never = MakeEvent(Event::Reset::kManual);
  EXPECT_EQ(clock.Wait(never, 20), WaitResult::kTimedOut);
  EXPECT_GE(clock.TickMs() - before, 10u);

  const LocalTime now = clock.Now();
  EXPECT_TRUE(now.month >= 1 && now.month <= 12 && now.day >= 1 && now.day <= 31 && now.hour < 24 && now.milliseconds < 1000);
  EXPECT_GE(now.year, 2024);
}

}  // namespace
