// Updates as the user meets them, by the built program against the update server that with_update_server has started: the
// balloon, the progress window, the question, the silent installation, the end, the balloon at the next start, and what is seen
// when they fail.

#include <windows.h>

#include <shellapi.h>

#include "app/messages.h"
#include "res/resource.h"
#include "tests/e2e/fixture.h"
#include "update_server/test_server.h"

namespace e2e {
namespace {

constexpr wchar_t kNoUpdate[] = L"No updates available. You are running the latest version.";
constexpr DWORD kPromptMs = 3'000;

class Updates : public EndToEndTest {
 protected:
  void SetUp() override {
    EndToEndTest::SetUp();
    ASSERT_TRUE(server_.IsTrusted());
    profile_.Set(L"UpdateChecksDisabled", 0);
  }

  /// The program of the build, but for where it looks for updates.
  static std::wstring Program() {
    wchar_t path[MAX_PATH]{};
    ::GetFullPathNameW(VANTORA_UPDATED_EXE, MAX_PATH, path, nullptr);
    return path;
  }
  std::optional<RegistryValue> Finished() const { return profile_.Get(kSettings, L"UpdateFinished"); }
  static void CheckByHand(const RunningProgram& program) { ::PostMessageW(program.WaitForTray(), UWM_CHECK_FOR_UPDATES, 1, 0); }
  static HWND ProgressWindow(const RunningProgram& program) {
    HWND window = program.FindVisibleWindow(kDialogClass, L"Vantora");
    return ::GetDlgItem(window, IDC_UPDATE_BAR) != nullptr ? window : nullptr;
  }
  /// The message box with the caption, once its text is the one expected.
  static HWND WaitForBox(const RunningProgram& program, const wchar_t* caption, const std::wstring& text) {
    return WaitForResult([&]() -> HWND {
      HWND box = program.FindVisibleWindow(kDialogClass, caption);
      return box != nullptr && ItemTextOf(box, 1001) == text ? box : nullptr;
    });
  }

  TestServer server_;
};

TEST_F(Updates, TheOfferIsInstalledAndTheNextStartSaysSo) {
  {
    const RunningProgram program(L"/tray", Program());
    const auto offer = shell_.WaitForBalloon(0);
    ASSERT_TRUE(offer.has_value());
    EXPECT_EQ(offer->infoTitle, L"Vantora Update Available");
    EXPECT_EQ(offer->info, L"Click here to update to version 0.0.2.9.");
    ::PostMessageW(program.WaitForTray(), UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK);
    const std::vector<std::wstring> expected = {L"\"" + server_.File() + L"\" /S", L"C:\\windows\\system32", server_.File(),
                                                L"vantorasetup.exe"};
    EXPECT_EQ(server_.LaunchRecord(), expected);
    EXPECT_EQ(program.WaitForExit(), 0u);
  }
  EXPECT_EQ(shell_.IconCount(), 0u) << "an orderly end";
  EXPECT_TRUE(PathExists(profile_.RulesFile()));
  EXPECT_EQ(Finished(), RegistryValue::Number(1));

  profile_.Set(L"UpdateChecksDisabled", 1);
  const std::size_t before = shell_.Balloons().size();
  const RunningProgram next(L"/tray", Program());
  const auto done = shell_.WaitForBalloon(before);
  ASSERT_TRUE(done.has_value());
  EXPECT_EQ(done->infoTitle, L"Vantora Updated");
  EXPECT_EQ(done->info, L"Newly installed version is 0.0.2.7 BETA.");
  EXPECT_EQ(Finished(), RegistryValue::Number(0));
  EXPECT_TRUE(next.End());
}

TEST_F(Updates, CheckByHandAsksAndInstallsOnYes) {
  TestServer::Use(L"slow");
  profile_.Set(L"IncludeBetas", 0);
  const RunningProgram program(L"/tray", Program());
  CheckByHand(program);  // while the automatic one runs, which it joins
  ASSERT_TRUE(WaitUntil([&] { return ProgressWindow(program) != nullptr; }));
  const std::wstring question = L"Version 0.0.2.8 is available. Update now?";
  PostCommand(ProgressWindow(program), IDCANCEL);  // closes the window, not the check
  ASSERT_TRUE(WaitUntil([&] { return ProgressWindow(program) == nullptr; }));
  HWND box = WaitForBox(program, L"Vantora Update Available", question);
  ASSERT_NE(box, nullptr);
  PostClick(box, IDNO);
  ASSERT_TRUE(WaitUntil([&] { return !::IsWindow(box); }));
  EXPECT_FALSE(server_.WasLaunched());

  CheckByHand(program);
  box = WaitForBox(program, L"Vantora Update Available", question);
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(ProgressWindow(program), nullptr);
  PostClick(box, IDYES);
  EXPECT_EQ(server_.LaunchRecord().size(), 4u);
  EXPECT_EQ(program.WaitForExit(), 0u);
  EXPECT_EQ(shell_.Balloons().size(), 0u);
  EXPECT_EQ(TestServer::Requests(),
            "https /slow/versioninfo/vantora/ Vantora\nhttps /slow/versioninfo/vantora/ Vantora\n"
            "https /slow/files/vantorasetup.exe Vantora\n");
}

TEST_F(Updates, CheckByHandThatFindsNothingOrFailsSaysThereIsNothing) {
  const struct {
    const wchar_t* scenario;
    const wchar_t* server;
  } cases[] = {{L"same", L"VANTORA_TEST_HTTPS"}, {L"missing", L"VANTORA_TEST_HTTPS"}, {L"good", L"VANTORA_TEST_STRANGER"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.scenario));
    TestServer::Use(c.scenario, c.server);
    const RunningProgram program(L"/tray", Program());
    CheckByHand(program);
    HWND box = WaitForBox(program, L"Vantora", kNoUpdate);
    ASSERT_NE(box, nullptr);
    PostClick(box, IDOK);
    ASSERT_TRUE(WaitUntil([&] { return !::IsWindow(box); }));
    EXPECT_TRUE(program.End());
  }
  EXPECT_EQ(shell_.Balloons().size(), 0u);
}

TEST_F(Updates, FailedInstallationSaysSoAndTheProgramGoesOn) {
  const struct {
    const wchar_t* scenario;
    std::wstring temp;
  } cases[] = {{L"unsigned", server_.Temp()}, {L"unstartable", server_.Temp()}, {L"good", server_.Temp() + L"\\nowhere"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.scenario));
    TestServer::Use(c.scenario);
    TestServer::UseTemp(c.temp);
    const std::size_t before = shell_.Balloons().size();
    const RunningProgram program(L"/tray", Program());
    ASSERT_TRUE(shell_.WaitForBalloon(before).has_value());
    ::PostMessageW(program.WaitForTray(), UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK);
    HWND box = program.WaitForWindow(kDialogClass, L"Vantora Update Error");
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(ItemTextOf(box, 1001).find(L"The update download failed. Please try again later or visit http"), 0u);
    PostClick(box, IDOK);
    ASSERT_TRUE(WaitUntil([&] { return !::IsWindow(box); }));
    EXPECT_TRUE(program.IsRunning());
    EXPECT_FALSE(PathExists(server_.File()));
    EXPECT_NE(Finished(), RegistryValue::Number(1));
    EXPECT_TRUE(program.End());
  }
  EXPECT_FALSE(server_.WasLaunched());
}

TEST_F(Updates, OneInstallationAtATimeAndExitDoesNotWaitForIt) {
  TestServer::Use(L"stall");
  const RunningProgram program(L"/tray", Program());
  ASSERT_TRUE(shell_.WaitForBalloon(0).has_value());
  ::PostMessageW(program.WaitForTray(), UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK);
  ASSERT_TRUE(WaitUntil([&] { return TestServer::Requests().find("/files/") != std::string::npos; }));

  CheckByHand(program);
  HWND box = WaitForBox(program, L"Vantora Update Available", L"Version 0.0.2.9 is available. Update now?");
  ASSERT_NE(box, nullptr);
  PostClick(box, IDYES);
  ASSERT_TRUE(WaitUntil([&] { return !::IsWindow(box); }));
  EXPECT_TRUE(NeverWithin(700, [&] {
    const std::string requests = TestServer::Requests();
    return requests.find("/files/") != requests.rfind("/files/");
  }));

  ::PostMessageW(program.WaitForTray(), UWM_TERMINATE, 0, 0);
  EXPECT_EQ(program.WaitForExit(kPromptMs), 0u);
  EXPECT_FALSE(PathExists(server_.File())) << "nothing half written";
  EXPECT_FALSE(Finished().has_value());
}

TEST_F(Updates, ExitDoesNotWaitForACheck) {
  TestServer::Use(L"mute");
  const RunningProgram program(L"/tray", Program());
  CheckByHand(program);
  ASSERT_TRUE(WaitUntil([&] { return ProgressWindow(program) != nullptr && !TestServer::Requests().empty(); }));
  ::PostMessageW(program.WaitForTray(), UWM_TERMINATE, 0, 0);
  EXPECT_EQ(program.WaitForExit(kPromptMs), 0u);
}

}  // namespace
}  // namespace e2e
