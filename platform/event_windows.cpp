#include "platform/event.h"

#include "platform/handles.h"

struct Event::Impl {
  UniqueHandle handle;
};

Event::Event() = default;
Event::~Event() = default;
Event::Event(Event&&) noexcept = default;
Event& Event::operator=(Event&&) noexcept = default;

bool Event::Create(Reset reset, std::uint32_t& error) {
  auto impl = std::make_unique<Impl>();
  impl->handle.reset(::CreateEventW(nullptr, reset == Reset::kManual, FALSE, nullptr));
  if (impl->handle == nullptr) {
    error = ::GetLastError();
    impl_.reset();
    return false;
  }
  impl_ = std::move(impl);
  return true;
}

void Event::Close() { impl_.reset(); }

bool Event::IsOpen() const { return impl_ != nullptr; }

void Event::Signal() {
  if (impl_ != nullptr) ::SetEvent(impl_->handle.get());
}

void Event::Clear() {
  if (impl_ != nullptr) ::ResetEvent(impl_->handle.get());
}

WaitResult Event::Wait(std::uint32_t timeoutMs) {
  if (impl_ == nullptr) return WaitResult::kFailed;
  switch (::WaitForSingleObject(impl_->handle.get(), timeoutMs)) {
    case WAIT_OBJECT_0:
      return WaitResult::kSignaled;
    case WAIT_TIMEOUT:
      return WaitResult::kTimedOut;
    default:
      return WaitResult::kFailed;
  }
}
