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

constexpr DWORD kPromptMs = 3'000;
constexpr wchar_t kAvailable[] = L"Vantora Update Available";

class Updates : public EndToEndTest {
 protected:
  void SetUp() override {
    EndToEndTest::SetUp();
    ASSERT_TRUE(server_.IsTrusted());
    profile_.Set(L"UpdateChecksDisabled", 0);
  }
  std::optional<RegistryValue> Finished() const { return profile_.Get(kSettings, L"UpdateFinished"); }
  static void CheckByHand(const RunningProgram& program) { program.PostToTray(UWM_CHECK_FOR_UPDATES, 1, 0); }
  static bool HasRequest(const char* part, std::size_t after = 0) {
    return TestServer::Requests().find(part, after) != std::string::npos;
  }
  /// Lets the program check, and answers the question that comes of it.
  static void AnswerOffer(const RunningProgram& program, const std::wstring& version, int button) {
    CheckByHand(program);
    HWND box = program.WaitForBox(kAvailable, L"Version " + version + L" is available. Update now?");
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(program.FindDialog(IDC_UPDATE_BAR), nullptr);
    EXPECT_TRUE(CloseBy(box, button));
  }

  /// The program of the build, but for where it looks for updates.
  const std::wstring program_ = FullPath(VANTORA_UPDATED_EXE);
  TestServer server_;
};

TEST_F(Updates, AreOfferedAndInstalledOnceTheUserAgreesAndTheNextStartSaysSo) {
  profile_.Set(L"IncludeBetas", 0);
  {
    const RunningProgram program(L"/tray", program_);
    const auto offer = shell_.WaitForBalloon(0);
    ASSERT_TRUE(offer.has_value());
    EXPECT_EQ(offer->infoTitle, kAvailable);
    EXPECT_EQ(offer->info, L"Click here to update to version 0.0.2.8.");

    TestServer::Use("slow");
    CheckByHand(program);
    CheckByHand(program);  // joins the one that runs
    HWND progress = program.WaitForDialog(IDC_UPDATE_BAR);
    ASSERT_NE(progress, nullptr);
    PostCommand(progress, IDCANCEL);  // closes the window, not the check
    ASSERT_TRUE(WaitUntil([&] { return !::IsWindow(progress); }));
    EXPECT_TRUE(CloseBy(program.WaitForBox(kAvailable, L"Version 0.0.2.8 is available. Update now?"), IDNO));
    EXPECT_FALSE(server_.WasLaunched());

    AnswerOffer(program, L"0.0.2.8", IDYES);
    EXPECT_EQ(server_.LaunchRecord(), server_.ProperLaunch());
    EXPECT_EQ(program.WaitForExit(), 0u);
  }
  EXPECT_EQ(shell_.IconCount(), 0u) << "an orderly end";
  EXPECT_TRUE(PathExists(profile_.RulesFile()));
  EXPECT_EQ(Finished(), RegistryValue::Number(1));
  EXPECT_EQ(shell_.Balloons().size(), 1u);
  const std::string check = "/versioninfo/vantora/ Vantora\n";
  EXPECT_EQ(TestServer::Requests(), check + check + check + "/files/vantorasetup.exe Vantora\n");

  profile_.Set(L"UpdateChecksDisabled", 1);
  const RunningProgram next(L"/tray", program_);
  const auto done = shell_.WaitForBalloon(1);
  ASSERT_TRUE(done.has_value());
  EXPECT_EQ(done->infoTitle, L"Vantora Updated");
  EXPECT_EQ(done->info, L"Newly installed version is 0.0.2.7 BETA.");
  EXPECT_EQ(Finished(), RegistryValue::Number(0));
  EXPECT_TRUE(next.End());
}

TEST_F(Updates, ThatFailAreToldAndTheProgramGoesOnAndEndsWithoutWaitingForACheck) {
  TestServer::Use("missing");
  const RunningProgram program(L"/tray", program_);
  for (const char* scenario : {"missing", "same"}) {
    SCOPED_TRACE(scenario);
    TestServer::Use(scenario);
    CheckByHand(program);
    HWND box = program.WaitForBox(L"Vantora", L"No updates available. You are running the latest version.");
    ASSERT_NE(box, nullptr);
    EXPECT_TRUE(CloseBy(box, IDOK));
  }
  EXPECT_EQ(shell_.Balloons().size(), 0u);

  for (const char* scenario : {"unsigned", "unstartable", "good"}) {
    SCOPED_TRACE(scenario);
    TestServer::Use(scenario);
    // The good one has no temporary folder to go to.
    if (scenario == std::string("good")) ::MoveFileW(server_.Temp().c_str(), (server_.Temp() + L"-gone").c_str());
    AnswerOffer(program, L"0.0.2.9", IDYES);
    HWND box = program.WaitForBox(L"Vantora Update Error", L"The update download failed. Please try again later or visit http");
    ASSERT_NE(box, nullptr);
    EXPECT_TRUE(CloseBy(box, IDOK));
    EXPECT_FALSE(PathExists(server_.File()));
    EXPECT_NE(Finished(), RegistryValue::Number(1));
    EXPECT_FALSE(server_.WasLaunched());
  }

  TestServer::Use("mute");
  const std::size_t before = TestServer::Requests().size();
  CheckByHand(program);
  ASSERT_NE(program.WaitForDialog(IDC_UPDATE_BAR), nullptr);
  ASSERT_TRUE(WaitUntil([&] { return HasRequest("/versioninfo/", before); }));
  program.PostToTray(UWM_TERMINATE, 0, 0);
  EXPECT_EQ(program.WaitForExit(kPromptMs), 0u);
}

TEST_F(Updates, InstallOneAtATimeAndExitDoesNotWaitForIt) {
  TestServer::Use("stall");
  const RunningProgram program(L"/tray", program_);
  ASSERT_TRUE(shell_.WaitForBalloon(0).has_value());
  program.PostToTray(UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK);
  ASSERT_TRUE(WaitUntil([] { return HasRequest("/files/"); }));
  const std::size_t before = TestServer::Requests().size();
  AnswerOffer(program, L"0.0.2.9", IDYES);
  EXPECT_TRUE(NeverWithin(700, [&] { return HasRequest("/files/", before); }));
  program.PostToTray(UWM_TERMINATE, 0, 0);
  EXPECT_EQ(program.WaitForExit(kPromptMs), 0u);
  EXPECT_FALSE(PathExists(server_.File())) << "nothing half written";
  EXPECT_FALSE(Finished().has_value());
}

}  // namespace
}  // namespace e2e
