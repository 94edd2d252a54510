#include "core/gui_alert_sink_windows.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "app/messages.h"
#include "platform/handles.h"

namespace {

AlertRecord Record(std::uint32_t pid) { return {{2026, 3, 4, 5, 9, 7, 3, 42}, pid, L"a.exe", 7, L"Threads: 2 > 1"}; }

TEST(GUIAlertSink, HandsEachAlertOutOnceInOrderAndKeepsNoneThatCannotBePosted) {
  Unique<HWND, ::DestroyWindow> target(
      ::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
  GUIAlertSink sink;
  GUIAlertSink other;
  sink.OnAlert(Record(1));
  EXPECT_EQ(sink.OutstandingCount(), 0u) << "nobody to post it to";
  sink.SetTarget(target.get());
  std::thread([&] {
    for (std::uint32_t pid = 1; pid <= 10'000; ++pid) sink.OnAlert(Record(pid));
  }).join();

  std::uint32_t taken = 0;
  MSG message{};
  while (::PeekMessageW(&message, target.get(), UWM_ALERT, UWM_ALERT, PM_REMOVE)) {
    ASSERT_EQ(other.TakeAlert(message.lParam), nullptr) << "not its own";
    const auto record = sink.TakeAlert(message.lParam);
    ASSERT_NE(record, nullptr);
    ASSERT_EQ(*record, Record(++taken));
    ASSERT_EQ(sink.TakeAlert(message.lParam), nullptr);
  }
  // The system's queue may refuse what is beyond its limit; what it has refused is not kept.
  EXPECT_GE(taken, 9'000u);
  EXPECT_EQ(sink.OutstandingCount(), 0u);

  target.reset();
  sink.OnAlert(Record(1));
  EXPECT_EQ(sink.OutstandingCount(), 0u) << "the target is gone";
}

}  // namespace
