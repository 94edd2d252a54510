// The tray window in this test's own thread: what it starts elsewhere is the test's. Checks by hand, their windows and what an
// installation does are seen in the built program.

#include "app/tray_window.h"

#include <gtest/gtest.h>

#include <atomic>

#include "res/messages.h"
#include "tests/support/profile.h"
#include "tests/support/shell_stand_in.h"
#include "tests/support/test_program.h"

namespace {

/// What the tray window has had done, by threads that may outlive their test.
std::atomic<int> checks;
std::atomic<int> installations;
std::atomic<int> mainWindows;
/// "path|flags" of each sound.
std::vector<std::wstring> sounds;

BOOL WINAPI RecordSound(LPCWSTR path, HMODULE, DWORD flags) {
  sounds.push_back(path + (L"|" + std::to_wstring(flags)));
  return FALSE;
}

void RecordCheck(Event& done) {
  ++checks;
  done.Signal();
}

class TrayWindowTest : public testing::Test {
 protected:
  TrayWindowTest() {
    checks = installations = mainWindows = 0;
    sounds.clear();
    std::uint32_t error = 0;
    EXPECT_TRUE(own_.updates.UpdateAvailableEvent.Create(Event::Reset::kManual, error));
    static const InstanceName name{L"VANTORA_TEST_TRAY", L"Vantora under test"};
    static const bool registered = TrayWindow::RegisterWindowClass(own_.program.instance, name.windowClass);
    EXPECT_TRUE(registered);
    EXPECT_NE(tray_.Create(name), nullptr);
    EXPECT_TRUE(PumpUntil([] { return checks == 1; })) << "the first check starts by itself";
  }
  ~TrayWindowTest() override { ::DestroyWindow(Window()); }

  [[nodiscard]] HWND Window() const { return own_.program.trayWindow; }
  void Send(UINT message, LPARAM lParam = 0, WPARAM wParam = 0) const { ::SendMessageW(Window(), message, wParam, lParam); }

  /// Runs the thread's messages until the condition holds.
  template <class Condition>
  static bool PumpUntil(Condition condition) {
    return e2e::WaitUntil([&] {
      MSG message{};
      while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) ::DispatchMessageW(&message);
      return condition();
    });
  }

  e2e::Profile profile_;
  e2e::ShellStandIn shell_;
  TestProgram own_;
  GUIAlertSink sink_;
  TrayWindow tray_{own_.program, sink_, {[] { ++mainWindows; }, [] {}, [] { ++installations; }, &RecordCheck}, &RecordSound};
};

TEST_F(TrayWindowTest, AnUpdatesOfferLastsAsLongAsItsBalloonAndTheNewsOfItUntilTheNextCheck) {
  const auto isKnown = [this] { return own_.updates.UpdateAvailableEvent.Wait(0) == WaitResult::kSignaled; };
  own_.updates.SetLatestVersion(L"0.0.2.8");
  Send(UWM_CHECK_FOR_UPDATES);
  EXPECT_TRUE(PumpUntil([this] { return !shell_.Calls(L"balloon").empty(); }));
  EXPECT_TRUE(isKnown());
  const struct {
    std::vector<LPARAM> notifications;
    int mainWindows;
  } steps[] = {
      {{NIN_BALLOONUSERCLICK}, 0},
      {{NIN_BALLOONUSERCLICK}, 1},  // the offer is gone: this click is one on an alert
      {{0, NIN_BALLOONHIDE, NIN_BALLOONUSERCLICK}, 2},
      {{0, NIN_BALLOONTIMEOUT, NIN_BALLOONUSERCLICK}, 3},
  };
  for (const auto& step : steps) {
    for (const LPARAM notification : step.notifications) {
      Send(notification == 0 ? UWM_SHOW_UPDATE_AVAILABLE_NOTIFICATION : UWM_TRAYICON, notification);
    }
    EXPECT_TRUE(e2e::WaitUntil([&] { return installations == 1 && mainWindows == step.mainWindows; }))
        << installations << " " << mainWindows << " for " << step.mainWindows;
  }

  own_.updates.SetLatestVersion(L"0.0.2.7 BETA");
  Send(UWM_CHECK_FOR_UPDATES);
  EXPECT_FALSE(isKnown());
  own_.updates.UpdateAvailableEvent.Signal();
  EXPECT_TRUE(PumpUntil([&] { return !isKnown(); })) << "nothing found";
}

TEST_F(TrayWindowTest, AMissingTaskbarIsTriedTwentyTimesMoreAndAChangedFrequencyTakesEffectByItsMessage) {
  shell_.refusing = true;
  Send(UWM_ADD_ICON);
  for (int retry = 1; retry <= 20; ++retry) {
    EXPECT_TRUE(PumpUntil([this] { return ::KillTimer(Window(), IDT_ADD_ICON_RETRY) != FALSE; })) << retry;
    Send(WM_TIMER, 0, IDT_ADD_ICON_RETRY);
  }
  PumpUntil([] { return true; });
  EXPECT_FALSE(::KillTimer(Window(), IDT_ADD_ICON_RETRY)) << "from now on it is awaited";

  EXPECT_TRUE(::KillTimer(Window(), IDT_UPDATE_CHECK)) << "armed from the start on";
  // No setting the user can make, but so many hours that 32 bits hold 128 of their milliseconds.
  own_.settings.Update([](AppSettings& settings) { settings.updateCheckIntervalHours = 29'446'773; });
  Send(UWM_UPDATE_INTERVAL_CHANGED);
  EXPECT_TRUE(PumpUntil([] { return checks > 1; }));
}

TEST_F(TrayWindowTest, AnAlertsSoundIsPlayedFromItsFileWithoutWaitingAndTheEndLetsNothingThrough) {
  // The alert is of no rule: the global actions hold.
  for (const auto& [actions, path] : {std::pair{ACTION_SOUND, L"C:\\a b.wav"}, {ACTION_SOUND, L""}, {ACTION_LOG, L"x.wav"}}) {
    own_.settings.Update([&, a = actions, p = path](AppSettings& settings) {
      settings.alertActions = a;
      settings.soundFilePath = p;
    });
    sink_.OnAlert({});
    EXPECT_TRUE(PumpUntil([&] { return sink_.OutstandingCount() == 0; }));
  }
  EXPECT_EQ(sounds, std::vector<std::wstring>{L"C:\\a b.wav|" + std::to_wstring(0x20001)});
  // What any program can send, pointing at nothing of ours.
  ::KillTimer(Window(), IDT_UPDATE_CHECK);
  for (const int hostile : {WM_NCCREATE, WM_CREATE}) Send(static_cast<UINT>(hostile));
  EXPECT_FALSE(::KillTimer(Window(), IDT_UPDATE_CHECK)) << "the window is not made a second time";
  Send(UWM_ALERT, 12345);
  EXPECT_EQ(own_.recentAlerts.Size(), 3u) << "an address that is none of the sink's is nothing";

  // A window on another thread, a moment before the process ends.
  own_.rules.Append({MakeNewRule(own_.rules.TakeRuleId())});
  Send(UWM_TERMINATE);
  own_.rules.RemoveAll();
  EXPECT_EQ(own_.rules.Snapshot()->size(), 1u);
  sink_.OnAlert({});
  EXPECT_EQ(sink_.OutstandingCount(), 0u);
}

}  // namespace
