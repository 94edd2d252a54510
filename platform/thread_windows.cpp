#include "platform/thread.h"

#include "platform/handles.h"
#include "platform/out_of_memory.h"

struct Thread::Impl {
  UniqueHandle handle;
  DWORD id = 0;
};

namespace {

using Routine = std::function<void()>;

DWORD WINAPI RunRoutine(void* parameter) {
  const std::unique_ptr<Routine> routine(static_cast<Routine*>(parameter));
  (void)DoUnlessOutOfMemory(L"Thread", *routine);
  return 0;
}

}  // namespace

Thread::Thread() = default;
Thread::~Thread() = default;
Thread::Thread(Thread&&) noexcept = default;
Thread& Thread::operator=(Thread&&) noexcept = default;

bool Thread::Start(std::function<void()> routine, std::uint32_t& error) {
  std::unique_ptr<Impl> impl(new (std::nothrow) Impl);
  std::unique_ptr<Routine> parameter(new (std::nothrow) Routine(std::move(routine)));
  if (impl == nullptr || parameter == nullptr) {
    error = ERROR_NOT_ENOUGH_MEMORY;
    return false;
  }
  impl->handle.reset(::CreateThread(nullptr, 0, RunRoutine, parameter.get(), 0, &impl->id));
  if (impl->handle == nullptr) {
    error = ::GetLastError();
    return false;
  }
  parameter.release();  // the new thread owns it now
  impl_ = std::move(impl);
  return true;
}

bool Thread::IsStarted() const { return impl_ != nullptr; }

std::uint32_t Thread::Id() const { return impl_ != nullptr ? impl_->id : 0; }

void Thread::SetIdlePriority() {
  if (impl_ != nullptr) ::SetThreadPriority(impl_->handle.get(), THREAD_PRIORITY_IDLE);
}

bool Thread::WaitForEnd(std::uint32_t timeoutMs) {
  return impl_ == nullptr || ::WaitForSingleObject(impl_->handle.get(), timeoutMs) == WAIT_OBJECT_0;
}

void Thread::Release() { impl_.reset(); }

bool StartDetachedThread(std::function<void()> routine) {
  Thread thread;
  std::uint32_t error = 0;
  return thread.Start(std::move(routine), error);
}
