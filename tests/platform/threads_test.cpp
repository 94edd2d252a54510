#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

#include "platform/background_query.h"
#include "platform/event.h"
#include "platform/thread.h"

namespace {

constexpr std::uint32_t kLongMs = 30'000;

TEST(Threads, EndIsWaitedForOnlySoLongAndReleasedAndDetachedOnesGoOn) {
  const auto go = std::make_shared<Event>();
  const auto done = std::make_shared<Event>();
  std::uint32_t error = 0;
  EXPECT_EQ(go->Wait(kLongMs), WaitResult::kFailed) << "there is none yet";
  ASSERT_TRUE(go->Create(Event::Reset::kManual, error) && done->Create(Event::Reset::kAuto, error));
  const auto routine = [go, done] {
    (void)go->Wait(kLongMs);
    done->Signal();
  };
  const auto references = go.use_count();
  Thread thread;
  EXPECT_TRUE(thread.WaitForEnd(0));
  ASSERT_TRUE(thread.Start(routine, error));
  EXPECT_FALSE(thread.WaitForEnd(10));
  go->Signal();
  EXPECT_TRUE(thread.WaitForEnd(kLongMs));
  EXPECT_EQ(go.use_count(), references) << "the end is told only when nothing of the routine is left";
  EXPECT_EQ(go->Wait(0), WaitResult::kSignaled) << "a manual one stays";
  EXPECT_EQ(done->Wait(0), WaitResult::kSignaled);
  for (const bool detached : {false, true}) {
    go->Clear();
    ASSERT_TRUE(detached ? StartDetachedThread(routine) : Thread().Start(routine, error));
    EXPECT_EQ(done->Wait(10), WaitResult::kTimedOut) << "an automatic one was taken once";
    go->Signal();
    EXPECT_EQ(done->Wait(kLongMs), WaitResult::kSignaled);
  }
}

/// What a slow question looks at: each asking takes the next gate and waits for it to be opened.
struct SlowSource {
  std::promise<void> gates[3];
  std::atomic<std::size_t> begun{0};
  std::atomic<int> atOnce{0};

  bool Answer() {
    EXPECT_EQ(++atOnce, 1);
    const std::size_t asking = begun++;
    gates[asking].get_future().wait();
    --atOnce;
    return asking == 0;
  }
  void WaitFor(std::size_t questions) const {
    while (begun < questions) std::this_thread::yield();
  }
};

TEST(BackgroundQuery, AnAnswerBegunBeforeTheQuestionDoesNotCountAndNobodyNeedWaitForOne) {
  const auto source = std::make_shared<SlowSource>();
  {
    BackgroundQuery query([source] { return source->Answer(); });
    query.Ask();
    source->WaitFor(1);
    EXPECT_FALSE(query.Wait(1));
    for (int times = 0; times < 2; ++times) query.Ask();  // the first is still out
    source->gates[0].set_value();
    source->WaitFor(2);
    EXPECT_FALSE(query.Wait(1));
    EXPECT_TRUE(query.LastAnswer()) << "the best that is known so far";
    source->gates[1].set_value();
    EXPECT_TRUE(query.Wait(kLongMs));
    EXPECT_FALSE(query.LastAnswer());
    EXPECT_EQ(source->begun, 2U) << "three questions, two of them folded into one";
    query.Ask();
    source->WaitFor(3);
  }
  source->gates[2].set_value();
  while (source.use_count() > 1) std::this_thread::yield();
}

}  // namespace
