// The tray window in this test's own thread: what it starts elsewhere is the test's, so that checks last as long as a test wants.

#include "app/tray_window.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "app/messages.h"
#include "platform/handles.h"
#include "res/resource.h"
#include "tests/e2e/profile.h"
#include "tests/e2e/shell_stand_in.h"
#include "tests/e2e/wait.h"
#include "tests/ui/test_program.h"
#include "ui/dialog_utilities.h"

namespace {

using UniqueWindow = Unique<HWND, ::DestroyWindow>;

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
            if (message.message == UWM_UPDATE_AVAILABLE && message.hwnd == own_.program.MainDialogHandle) ++toldOfUpdate_;
            if (!tray_.TranslateDialogMessage(message)) ::DispatchMessageW(&message);
          }
          return condition();
        },
        timeoutMs);
  }

  /// Lets the running check answer with the version.
  void Answer(const wchar_t* version) {
    own_.updates.SetLatestVersion(version);
    answer_ = true;
  }
  [[nodiscard]] static HWND FindBox(const wchar_t* title) { return ::FindWindowW(L"#32770", title); }

  inline static const InstanceName kName{L"VANTORA_TEST_TRAY", L"Vantora under test"};

  e2e::Profile profile_;
  e2e::ShellStandIn shell_;
  TestProgram own_;
  GUIAlertSink sink_;
  std::vector<PlayedSound> sounds_;
  int toldOfUpdate_ = 0;
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

TEST_F(TrayWindowTest, RequestsJoinTheRunningCheckAndOneOfTheUserMakesItTheUsers) {
  ASSERT_TRUE(PumpUntil([&] { return checksStarted_ == 1; })) << "the first check starts by itself";
  ::SendMessageW(Window(), UWM_CHECK_FOR_UPDATES, 0, 0);
  EXPECT_EQ(FindBox(L"Vantora"), nullptr);
  ::SendMessageW(Window(), UWM_CHECK_FOR_UPDATES, 1, 0);
  ::SendMessageW(Window(), UWM_CHECK_FOR_UPDATES, 1, 0);
  HWND progress = FindBox(L"Vantora");
  EXPECT_NE(::GetDlgItem(progress, IDC_UPDATE_BAR), nullptr);

  Answer(L"0.0.2.7");
  std::thread click([&] {
    HWND box = e2e::WaitForResult([&] { return ::IsWindow(progress) ? nullptr : FindBox(L"Vantora"); });
    ::PostMessageW(box, WM_COMMAND, IDOK, 0);
  });
  EXPECT_TRUE(PumpUntil([&] { return !::IsWindow(progress) && FindBox(L"Vantora") == nullptr; }));
  click.join();
  EXPECT_EQ(checksStarted_, 1);
  EXPECT_EQ(own_.updates.UpdateAvailableEvent.Wait(0), WaitResult::kTimedOut);

  ::SendMessageW(Window(), UWM_CHECK_FOR_UPDATES, 0, 0);
  EXPECT_TRUE(PumpUntil([&] { return checksEnded_ == 2; })) << "an ended check no longer takes requests in";
}

TEST_F(TrayWindowTest, AnAutomaticCheckOffersTheUpdateByBalloonAndTellsTheMainWindow) {
  const UniqueWindow mainWindow(::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
  own_.program.MainDialogHandle = mainWindow.get();
  Answer(L"0.0.2.8");
  ASSERT_TRUE(PumpUntil([&] { return !shell_.Balloons().empty(); }));
  EXPECT_EQ(shell_.Balloons().front().infoTitle, L"Vantora Update Available");
  EXPECT_EQ(shell_.Balloons().front().info, L"Click here to update to version 0.0.2.8.");
  EXPECT_EQ(own_.updates.UpdateAvailableEvent.Wait(0), WaitResult::kSignaled);
  EXPECT_TRUE(PumpUntil([&] { return toldOfUpdate_ == 1; }));

  ::SendMessageW(Window(), UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK);
  EXPECT_TRUE(e2e::WaitUntil([&] { return installations_ == 1; }));
  EXPECT_EQ(mainWindows_, 0);
  ::SendMessageW(Window(), UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK);
  EXPECT_TRUE(e2e::WaitUntil([&] { return mainWindows_ == 1; })) << "the offer is gone: this click is one on an alert";
  EXPECT_EQ(installations_, 1);
  own_.program.MainDialogHandle = nullptr;
}

TEST_F(TrayWindowTest, AnOfferThatWasClosedIsNotInstalledByALaterClick) {
  for (const LPARAM closed : {LPARAM{NIN_BALLOONHIDE}, LPARAM{NIN_BALLOONTIMEOUT}}) {
    ::SendMessageW(Window(), UWM_SHOW_UPDATE_AVAILABLE_NOTIFICATION, 0, 0);
    ::SendMessageW(Window(), UWM_TRAYICON, 0, closed);
    ::SendMessageW(Window(), UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK);
  }
  EXPECT_TRUE(e2e::WaitUntil([&] { return mainWindows_ == 2; }));
  EXPECT_EQ(installations_, 0);
}

TEST_F(TrayWindowTest, ACheckWithoutAnUpdatePutsTheOpenMainWindowsLinkBack) {
  const UniqueWindow mainWindow(::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
  HWND link = ::CreateWindowExW(0, L"STATIC", L"Version 0.0.2.8 available.", WS_CHILD, 0, 0, 0, 0, mainWindow.get(),
                                reinterpret_cast<HMENU>(INT_PTR{IDC_VERSION_LINK}), nullptr, nullptr);
  own_.program.MainDialogHandle = mainWindow.get();
  Answer(L"0.0.2.7 BETA");
  const auto text = [&] {
    wchar_t buffer[100]{};
    ::GetWindowTextW(link, buffer, 100);
    return std::wstring(buffer);
  };
  EXPECT_TRUE(PumpUntil([&] { return text() == L"Version 0.0.2.7 BETA. <a>Check for updates</a>"; }));
  own_.program.MainDialogHandle = nullptr;
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

TEST_F(TrayWindowTest, TheEndSavesAndLetsNoLaterChangeThrough) {
  own_.rules.Append({MakeNewRule(own_.rules.TakeRuleId())});
  own_.settings.Update([](AppSettings& settings) { settings.notificationThrottleSec = 99; });
  ::SendMessageW(Window(), UWM_TERMINATE, 0, 0);
  EXPECT_FALSE(::IsWindow(Window()));
  EXPECT_EQ(shell_.IconCount(), 0u);
  EXPECT_EQ(profile_.Get(e2e::kSettings, L"NotificationThrottleSec"), e2e::RegistryValue::Number(99));
  const auto saved = e2e::ReadFileBytes(profile_.RulesFile());
  EXPECT_TRUE(saved && saved->find("1,") != std::string::npos);
  // A window on another thread, a moment before the process ends.
  own_.rules.RemoveAll();
  EXPECT_EQ(own_.rules.Snapshot()->size(), 1u);
  sink_.OnAlert({});
  EXPECT_EQ(sink_.OutstandingCount(), 0u);
  MSG message{};
  EXPECT_TRUE(::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
  checksEnded_ = checksStarted_.load();
}

}  // namespace
