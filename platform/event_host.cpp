#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/event.h"

struct Event::Impl {
  std::mutex mutex;
  std::condition_variable changed;
  bool manualReset = true;
  bool signaled = false;
};

Event::Event() = default;
Event::~Event() = default;
Event::Event(Event&&) noexcept = default;
Event& Event::operator=(Event&&) noexcept = default;

bool Event::Create(Reset reset, std::uint32_t& /*error*/) {
  impl_ = std::make_unique<Impl>();
  impl_->manualReset = reset == Reset::kManual;
  return true;
}

void Event::Close() { impl_.reset(); }

bool Event::IsOpen() const { return impl_ != nullptr; }

void Event::Signal() {
  if (impl_ == nullptr) return;
  std::lock_guard lock(impl_->mutex);
  impl_->signaled = true;
  impl_->changed.notify_all();
}

void Event::Clear() {
  if (impl_ == nullptr) return;
  std::lock_guard lock(impl_->mutex);
  impl_->signaled = false;
}

WaitResult Event::Wait(std::uint32_t timeoutMs) {
  if (impl_ == nullptr) return WaitResult::kFailed;
  std::unique_lock lock(impl_->mutex);
  // An absolute deadline on the system clock: the sanitizers know that wait, and the steady one's they do not.
  const auto deadline = std::chrono::system_clock::now() + std::chrono::milliseconds(timeoutMs);
  if (!impl_->changed.wait_until(lock, deadline, [this] { return impl_->signaled; })) return WaitResult::kTimedOut;
  if (!impl_->manualReset) impl_->signaled = false;
  return WaitResult::kSignaled;
}
