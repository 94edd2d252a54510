#include "platform/thread.h"

#include <gtest/gtest.h>

#include <atomic>
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

TEST(Event, ManualStaysSignalledAndAutoIsTakenOnce) {
  Event manual = MakeEvent(Event::Reset::kManual);
  EXPECT_EQ(manual.Wait(0), WaitResult::kTimedOut);
  manual.Signal();
  EXPECT_EQ(manual.Wait(kLongMs), WaitResult::kSignaled);
  EXPECT_EQ(manual.Wait(0), WaitResult::kSignaled);
  manual.Clear();
  EXPECT_EQ(manual.Wait(0), WaitResult::kTimedOut);

  Event automatic = MakeEvent(Event::Reset::kAuto);
  automatic.Signal();
  EXPECT_EQ(automatic.Wait(kLongMs), WaitResult::kSignaled);
  EXPECT_EQ(automatic.Wait(0), WaitResult::kTimedOut);
}

TEST(Event, EmptyOneFailsAtOnce) {
  Event event;
  event.Signal();
  EXPECT_FALSE(event.IsOpen());
  EXPECT_EQ(event.Wait(kLongMs), WaitResult::kFailed);
  event = MakeEvent(Event::Reset::kManual);
  event.Close();
  EXPECT_EQ(event.Wait(kLongMs), WaitResult::kFailed);
}

TEST(Thread, EndIsWaitedForOnlySoLong) {
  auto go = std::make_shared<Event>(MakeEvent(Event::Reset::kManual));
  Thread thread;
  EXPECT_TRUE(thread.WaitForEnd(0));
  std::uint32_t error = 0;
  ASSERT_TRUE(thread.Start([go] { (void)go->Wait(kLongMs); }, error));
  thread.SetIdlePriority();
  EXPECT_NE(thread.Id(), 0u);
  EXPECT_FALSE(thread.WaitForEnd(10));
  go->Signal();
  EXPECT_TRUE(thread.WaitForEnd(kLongMs));
  // The end is told only when nothing of the routine is left.
  EXPECT_EQ(go.use_count(), 1);
  thread.Release();
  EXPECT_FALSE(thread.IsStarted());
}

TEST(Thread, ReleasedAndDetachedOnesGoOn) {
  auto go = std::make_shared<Event>(MakeEvent(Event::Reset::kManual));
  auto done = std::make_shared<Event>(MakeEvent(Event::Reset::kAuto));
  const auto routine = [go, done] {
    (void)go->Wait(kLongMs);
    done->Signal();
  };
  {
    Thread thread;
    std::uint32_t error = 0;
    ASSERT_TRUE(thread.Start(routine, error));
  }
  go->Signal();
  EXPECT_EQ(done->Wait(kLongMs), WaitResult::kSignaled);
  ASSERT_TRUE(StartDetachedThread(routine));
  EXPECT_EQ(done->Wait(kLongMs), WaitResult::kSignaled);
}

TEST(SystemClock, TicksAgreeAndTheDateIsConsistent) {
  Clock& clock = SystemClock();
  const std::uint64_t before = clock.TickMs();
  const std::uint32_t tick32 = clock.Tick32Ms();
  EXPECT_LE(tick32 - static_cast<std::uint32_t>(before), 60'000u);
  Event never = MakeEvent(Event::Reset::kManual);
  EXPECT_EQ(clock.Wait(never, 20), WaitResult::kTimedOut);
  EXPECT_GE(clock.TickMs() - before, 10u);

  const LocalTime now = clock.Now();
  ASSERT_TRUE(now.month >= 1 && now.month <= 12 && now.day >= 1 && now.day <= 31 && now.hour < 24 && now.milliseconds < 1000);
  EXPECT_GE(now.year, 2024);
  // Sakamoto's method: the day of the week follows from the date.
  constexpr int kMonthShift[] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
  const int year = now.month < 3 ? now.year - 1 : now.year;
  EXPECT_EQ(now.dayOfWeek, (year + year / 4 - year / 100 + year / 400 + kMonthShift[now.month - 1] + now.day) % 7);
}

}  // namespace
