#include "platform/background_query.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "platform/out_of_memory.h"
#include "platform/thread.h"

struct BackgroundQuery::State {
  explicit State(Question asked) : question(std::move(asked)) {}

  const Question question;
  std::mutex mutex;
  std::condition_variable answered;
  std::uint64_t askedCount = 0;
  std::uint64_t answeredCount = 0;  ///< how many had been asked when the newest answer was begun
  bool running = false;
  bool answer = false;
};

BackgroundQuery::BackgroundQuery(Question question) : state_(std::make_shared<State>(std::move(question))) {}

void BackgroundQuery::Ask() {
  {
    std::lock_guard lock(state_->mutex);
    ++state_->askedCount;
    if (state_->running) return;  // the thread asks once more when its present answer has come
    state_->running = true;
  }
  if (StartDetachedThread([state = state_] { Run(state); })) return;
  std::lock_guard lock(state_->mutex);
  state_->running = false;
}

void BackgroundQuery::Run(const std::shared_ptr<State>& state) {
  std::unique_lock lock(state->mutex);
  while (state->answeredCount != state->askedCount) {
    const std::uint64_t asked = state->askedCount;
    lock.unlock();
    const bool answer = UnlessOutOfMemory(L"BackgroundQuery", false, state->question);
    lock.lock();
    state->answer = answer;
    state->answeredCount = asked;
    state->answered.notify_all();
  }
  state->running = false;
}

bool BackgroundQuery::Wait(std::uint32_t timeoutMs) {
  std::unique_lock lock(state_->mutex);
  state_->answered.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                            [this] { return state_->answeredCount == state_->askedCount || !state_->running; });
  return state_->answeredCount == state_->askedCount;
}

bool BackgroundQuery::LastAnswer() const {
  std::lock_guard lock(state_->mutex);
  return state_->answer;
}
