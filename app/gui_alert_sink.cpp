#include "app/gui_alert_sink.h"

#include "res/messages.h"

void GUIAlertSink::SetTarget(HWND window) {
  std::lock_guard lock(mutex_);
  target_ = window;
}

void GUIAlertSink::OnAlert(const AlertRecord& record) {
  auto copy = std::make_unique<AlertRecord>(record);
  const auto address = reinterpret_cast<LPARAM>(copy.get());
  HWND target = nullptr;
  {
    // Entered before the post: the receiver may take the copy before the post has returned.
    std::lock_guard lock(mutex_);
    target = target_;
    outstanding_.emplace(address, std::move(copy));
  }
  if (target == nullptr || !::PostMessageW(target, UWM_ALERT, 0, address)) TakeAlert(address).reset();
}

std::unique_ptr<AlertRecord> GUIAlertSink::TakeAlert(LPARAM address) {
  std::lock_guard lock(mutex_);
  const auto found = outstanding_.find(address);
  if (found == outstanding_.end()) return nullptr;
  auto record = std::move(found->second);
  outstanding_.erase(found);
  return record;
}

std::size_t GUIAlertSink::OutstandingCount() const {
  std::lock_guard lock(mutex_);
  return outstanding_.size();
}
