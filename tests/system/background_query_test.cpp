#include "system/background_query.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <mutex>
#include <vector>

namespace {

/// What a slow question looks at: each asking takes the next gate and waits for it to be opened with an answer.
struct SlowSource {
  std::mutex mutex;
  std::vector<std::promise<bool>> gates = std::vector<std::promise<bool>>(3);
  std::atomic<std::size_t> begun{0};
  std::atomic<int> atOnce{0};
  std::atomic<int> mostAtOnce{0};

  bool Answer() {
    mostAtOnce = std::max(mostAtOnce.load(), ++atOnce);
    const bool answer = gates.at(begun++).get_future().get();
    --atOnce;
    return answer;
  }
};

constexpr std::uint32_t kLongMs = 30'000;

TEST(BackgroundQuery, AnAnswerBegunBeforeTheQuestionDoesNotCount) {
  const auto source = std::make_shared<SlowSource>();
  BackgroundQuery query([source] { return source->Answer(); });
  query.Ask();
  while (source->begun < 1) std::this_thread::yield();
  EXPECT_FALSE(query.Wait(1));
  query.Ask();  // the first is still out
  query.Ask();
  source->gates[0].set_value(true);
  while (source->begun < 2) std::this_thread::yield();
  EXPECT_FALSE(query.Wait(1));
  EXPECT_TRUE(query.LastAnswer()) << "the best that is known so far";
  source->gates[1].set_value(false);
  EXPECT_TRUE(query.Wait(kLongMs));
  EXPECT_FALSE(query.LastAnswer());
  EXPECT_EQ(source->begun, 2U) << "three questions, two of them folded into one";
  EXPECT_EQ(source->mostAtOnce, 1);
}

TEST(BackgroundQuery, MayGoWhileAQuestionIsOut) {
  const auto source = std::make_shared<SlowSource>();
  {
    BackgroundQuery query([source] { return source->Answer(); });
    query.Ask();
    while (source->begun < 1) std::this_thread::yield();
  }
  source->gates[0].set_value(true);
  while (source.use_count() > 1) std::this_thread::yield();
}

}  // namespace
