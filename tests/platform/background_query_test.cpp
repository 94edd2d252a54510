#include "platform/background_query.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

namespace {

/// What a slow question looks at: each asking takes the next gate and waits for it to be opened with an answer.
struct SlowSource {
  std::vector<std::promise<bool>> gates = std::vector<std::promise<bool>>(3);
  std::atomic<std::size_t> begun{0};
  std::atomic<int> atOnce{0};

  bool Answer() {
    EXPECT_EQ(++atOnce, 1);
    const bool answer = gates.at(begun++).get_future().get();
    --atOnce;
    return answer;
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
    source->gates[0].set_value(true);
    source->WaitFor(2);
    EXPECT_FALSE(query.Wait(1));
    EXPECT_TRUE(query.LastAnswer()) << "the best that is known so far";
    source->gates[1].set_value(false);
    EXPECT_TRUE(query.Wait(30'000));
    EXPECT_FALSE(query.LastAnswer());
    EXPECT_EQ(source->begun, 2U) << "three questions, two of them folded into one";
    query.Ask();
    source->WaitFor(3);
  }
  source->gates[2].set_value(true);
  while (source.use_count() > 1) std::this_thread::yield();
}

}  // namespace
