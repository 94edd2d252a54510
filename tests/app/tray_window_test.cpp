// The tray window in this test's own thread: what it starts elsewhere is the test's, so that checks last as long as a test wants.

#include "app/tray_window.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "app/messages.h"
#include "tests/e2e/profile.h"
#include "tests/e2e/shell_stand_in.h"
#include "tests/e2e/wait.h"
#include "tests/ui/test_program.h"

namespace {

struct PlayedSound {
  std::wstring path;
  HMODULE module;
  DWORD flags;
};
std::vector<PlayedSound>* playedSounds = nullptr;

BOOL WINAPI RecordSound(LPCWSTR path, HMODULE module, DWORD flags) {
  playedSounds->push_back({path, module, flags});
  return FALSE;
}

class TrayWindowTest : public testing::Test {
 protected:
  TrayWindowTest() {
    playedSounds = &sounds_;
    std::uint32_t error = 0;
    EXPECT_TRUE(own_.updates.UpdateAvailableEvent.Create(Event::Reset::kManual, error));
    static const bool registered = TrayWindow::RegisterWindowClass(own_.program.instance, kName.windowClass);
    EXPECT_TRUE(registered);
    EXPECT_NE(tray_.Create(kName), nullptr);
    ::SendMessageW(Window(), UWM_ADD_ICON, 0, 0);
  }
  ~TrayWindowTest() override {
    answer_ = true;
    PumpUntil([&] { return checksEnded_ == checksStarted_; });
    ::DestroyWindow(Window());
    MSG message{};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    }
  }

  [[nodiscard]] HWND Window() const { return own_.program.trayWindow; }

  /// Runs the thread's messages until the condition holds.
  template <class Condition>
  bool PumpUntil(Condition condition, DWORD timeoutMs = e2e::kPatienceMs) {
    return e2e::WaitUntil(
        [&] {
          MSG message{};
          while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (!tray_.TranslateDialogMessage(message)) ::DispatchMessageW(&message);
          }
          return condition();
        },
        timeoutMs);
  }

  inline static const InstanceName kName{L"VANTORA_TEST_TRAY", L"Vantora under test"};

  e2e::Profile profile_;
  e2e::ShellStandIn shell_;
  TestProgram own_;
  GUIAlertSink sink_;
  std::vector<PlayedSound> sounds_;
  std::atomic<int> checksStarted_{0};
  std::atomic<int> checksEnded_{0};
  std::atomic<bool> answer_{false};
  std::atomic<int> installations_{0};
  std::atomic<int> mainWindows_{0};
  TrayWindow tray_{own_.program,
                   sink_,
                   {[this] { ++mainWindows_; }, [] {}, [this] { ++installations_; },
                    [this](Event& done) {
                      ++checksStarted_;
                      e2e::WaitUntil([&] { return answer_.load(); });
                      done.Signal();
                      ++checksEnded_;
                    }},
                   &RecordSound};
};

TEST_F(TrayWindowTest, AnOfferThatWasClosedIsNotInstalledByALaterClick) {
  for (const LPARAM closed : {LPARAM{NIN_BALLOONHIDE}, LPARAM{NIN_BALLOONTIMEOUT}}) {
    ::SendMessageW(Window(), UWM_SHOW_UPDATE_AVAILABLE_NOTIFICATION, 0, 0);
    ::SendMessageW(Window(), UWM_TRAYICON, 0, closed);
    ::SendMessageW(Window(), UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK);
  }
  EXPECT_TRUE(e2e::WaitUntil([&] { return mainWindows_ == 2; }));
  EXPECT_EQ(installations_, 0);
}

TEST_F(TrayWindowTest, AChangedFrequencyTakesEffectByItsMessage) {
  answer_ = true;
  ASSERT_TRUE(PumpUntil([&] { return checksEnded_ == 1; }));
  // No setting the user can make, but one that comes round within a test.
  own_.settings.Update([](AppSettings& settings) { settings.updateCheckIntervalHours = 0; });
  EXPECT_FALSE(PumpUntil([&] { return checksStarted_ > 1; }, 300));
  ::SendMessageW(Window(), UWM_UPDATE_INTERVAL_CHANGED, 0, 0);
  EXPECT_TRUE(PumpUntil([&] { return checksStarted_ > 1; }));
  own_.settings.Update([](AppSettings& settings) { settings.updateCheckIntervalHours = 24; });
  ::SendMessageW(Window(), UWM_UPDATE_INTERVAL_CHANGED, 0, 0);
}

TEST_F(TrayWindowTest, AnAlertsSoundIsPlayedFromItsFileWithoutWaiting) {
  AlertRecord record;
  record.ruleId = 77;  // of no rule: the global actions hold
  for (const auto& [actions, path] : {std::pair{ACTION_SOUND, L"C:\\a b.wav"}, {ACTION_SOUND, L""}, {ACTION_LOG, L"x.wav"}}) {
    own_.settings.Update([&, a = actions, p = path](AppSettings& settings) {
      settings.alertActions = a;
      settings.soundFilePath = p;
    });
    sink_.OnAlert(record);
    EXPECT_TRUE(PumpUntil([&] { return sink_.OutstandingCount() == 0; }));
  }
  ASSERT_EQ(sounds_.size(), 1u);
  EXPECT_EQ(sounds_[0].path, L"C:\\a b.wav");
  EXPECT_EQ(sounds_[0].module, nullptr);
  EXPECT_EQ(sounds_[0].flags, 0x20001u);
  EXPECT_EQ(own_.recentAlerts.Size(), 3u);
}

}  // namespace
