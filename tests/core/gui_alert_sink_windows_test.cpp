#include "core/gui_alert_sink_windows.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "app/messages.h"
#include "platform/handles.h"

namespace {

using UniqueWindow = Unique<HWND, ::DestroyWindow>;

UniqueWindow MakeTarget() {
  return UniqueWindow(::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
}

AlertRecord Record(std::uint32_t pid) { return {{2026, 3, 4, 5, 9, 7, 3, 42}, pid, L"a.exe", 7, L"Threads: 2 > 1"}; }

/// The addresses that have arrived at the window, oldest first.
std::vector<LPARAM> TakeArrived(HWND window) {
  std::vector<LPARAM> addresses;
  MSG message{};
  while (::PeekMessageW(&message, window, UWM_ALERT, UWM_ALERT, PM_REMOVE)) addresses.push_back(message.lParam);
  return addresses;
}

TEST(GUIAlertSink, ManyAlertsArriveInOrderWhileNobodyLooksAndEachIsHandedOutOnce) {
  const UniqueWindow target = MakeTarget();
  GUIAlertSink sink;
  sink.SetTarget(target.get());
  std::thread([&] {
    for (std::uint32_t pid = 1; pid <= 10'000; ++pid) sink.OnAlert(Record(pid));
  }).join();
  const auto addresses = TakeArrived(target.get());
  // The system's queue may refuse what is beyond its limit; what it has refused is not kept.
  ASSERT_GE(addresses.size(), 9'000u);
  EXPECT_EQ(sink.OutstandingCount(), addresses.size());
  std::uint32_t pid = 0;
  for (const LPARAM address : addresses) {
    const auto record = sink.TakeAlert(address);
    ASSERT_NE(record, nullptr);
    ASSERT_EQ(*record, Record(++pid));
    ASSERT_EQ(sink.TakeAlert(address), nullptr);
  }
  EXPECT_EQ(sink.OutstandingCount(), 0u);
}

TEST(GUIAlertSink, AnAlertThatCannotBePostedIsReleasedAtOnce) {
  GUIAlertSink sink;
  sink.OnAlert(Record(1));
  EXPECT_EQ(sink.OutstandingCount(), 0u);
  HWND gone = nullptr;
  {
    const UniqueWindow target = MakeTarget();
    gone = target.get();
  }
  sink.SetTarget(gone);
  sink.OnAlert(Record(2));
  EXPECT_EQ(sink.OutstandingCount(), 0u);
}

TEST(GUIAlertSink, ForeignAddressesAreNotHandedOut) {
  const UniqueWindow target = MakeTarget();
  GUIAlertSink sink;
  GUIAlertSink other;
  sink.SetTarget(target.get());
  other.SetTarget(target.get());
  sink.OnAlert(Record(1));
  other.OnAlert(Record(2));
  const auto addresses = TakeArrived(target.get());
  ASSERT_EQ(addresses.size(), 2u);
  for (const LPARAM foreign : {LPARAM{0}, LPARAM{1}, LPARAM{-1}, addresses[0] + 8, addresses[1]}) {
    EXPECT_EQ(sink.TakeAlert(foreign), nullptr) << foreign;
  }
  EXPECT_NE(sink.TakeAlert(addresses[0]), nullptr);
}

}  // namespace
