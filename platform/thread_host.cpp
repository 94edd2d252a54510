#include "platform/thread.h"

#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <system_error>
#include <thread>

#include "platform/event.h"
#include "platform/out_of_memory.h"

namespace {

constexpr std::uint32_t kForeverMs = 0xFFFFFFFF;

std::uint32_t CurrentThreadId() { return static_cast<std::uint32_t>(::syscall(SYS_gettid)); }

}  // namespace

struct Thread::Impl {
  // Shared with the thread itself, which may outlive its owner.
  struct Progress {
    std::uint32_t id = 0;
    Event started;
    Event ended;
  };
  std::thread thread;
  std::shared_ptr<Progress> progress = std::make_shared<Progress>();

  ~Impl() {
    if (thread.joinable()) thread.detach();
  }
};

Thread::Thread() = default;
Thread::~Thread() = default;
Thread::Thread(Thread&&) noexcept = default;
Thread& Thread::operator=(Thread&&) noexcept = default;

bool Thread::Start(std::function<void()> routine, std::uint32_t& error) {
  auto impl = std::make_unique<Impl>();
  const std::shared_ptr<Impl::Progress> progress = impl->progress;
  if (!progress->started.Create(Event::Reset::kManual, error) || !progress->ended.Create(Event::Reset::kManual, error))
    return false;
  try {
    impl->thread = std::thread([routine = std::move(routine), progress]() mutable {
      progress->id = CurrentThreadId();
      progress->started.Signal();
      (void)DoUnlessOutOfMemory(L"Thread", routine);
      routine = nullptr;  // what it holds is let go before anybody learns of the end
      progress->ended.Signal();
    });
  } catch (const std::system_error& failure) {
    error = static_cast<std::uint32_t>(failure.code().value());
    return false;
  }
  if (progress->started.Wait(kForeverMs) == WaitResult::kFailed) return false;
  impl_ = std::move(impl);
  return true;
}

bool Thread::IsStarted() const { return impl_ != nullptr; }

std::uint32_t Thread::Id() const { return impl_ != nullptr ? impl_->progress->id : 0; }

void Thread::SetIdlePriority() {
  if (impl_ == nullptr) return;
  const sched_param parameters = {};
  ::sched_setscheduler(static_cast<pid_t>(impl_->progress->id), SCHED_IDLE, &parameters);
}

bool Thread::WaitForEnd(std::uint32_t timeoutMs) {
  if (impl_ == nullptr) return true;
  if (impl_->progress->ended.Wait(timeoutMs) != WaitResult::kSignaled) return false;
  // The routine is over; joining only collects what the system still keeps of the thread.
  if (impl_->thread.joinable()) impl_->thread.join();
  return true;
}

void Thread::Release() { impl_.reset(); }

bool StartDetachedThread(std::function<void()> routine) {
  Thread thread;
  std::uint32_t error = 0;
  return thread.Start(std::move(routine), error);
}
