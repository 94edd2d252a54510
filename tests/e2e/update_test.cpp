// Updates as the user meets them, by the built program against the update server that with_update_server has started: the
// balloon, the progress window, the question, what is seen when they fail, and the end of the program in the middle of them. That
// they succeed is shown with the real installer.

#include <windows.h>

#include <shellapi.h>

#include "tests/support/program_test.h"
#include "tests/update_server/test_server.h"

namespace e2e {
namespace {

constexpr wchar_t kAvailable[] = L"Vantora Update Available";
constexpr wchar_t kQuestion[] = L"Version 0.0.2.9 is available. Update now?";

class Updates : public EndToEndTest {
 protected:
  void SetUp() override {
    EndToEndTest::SetUp();
    profile_.Set(L"UpdateChecksDisabled", 0);
  }
  std::optional<RegistryValue> Finished() const { return profile_.Get(kSettings, L"UpdateFinished"); }
  static void CheckByHand(const RunningProgram& program) { program.PostToTray(UWM_CHECK_FOR_UPDATES, 1, 0); }
  static bool IsAskedFor(const char* part, std::size_t after = 0) {
    return WaitUntil([&] { return TestServer::Requests().find(part, after) != std::string::npos; });
  }

  /// The program of the build, but for where it looks for updates.
  const std::wstring program_ = FullPath(VANTORA_UPDATED_EXE);
  TestServer server_;
};

TEST_F(Updates, ThatFailAreToldAndTheProgramGoesOnAndEndsWithoutWaitingForACheck) {
  TestServer::Use("missing");
  const RunningProgram program(L"/tray", program_);
  for (const char* scenario : {"missing", "same"}) {
    TestServer::Use(scenario);
    CheckByHand(program);
    EXPECT_TRUE(program.AnswerBox(L"Vantora", L"No updates available. You are running the latest version.", IDOK)) << scenario;
  }
  EXPECT_TRUE(shell_.Calls(L"balloon").empty());

  program.PostToTray(UWM_TRAYICON, 0, WM_LBUTTONUP);
  HWND link = ::GetDlgItem(program.WaitForMainWindow(), IDC_VERSION_LINK);
  EXPECT_TRUE(WaitUntil([&] { return TextOf(link) == L"Version 0.0.2.7 BETA. <a>Check for updates</a>"; }));
  TestServer::Use("slow");
  const std::size_t atStart = TestServer::Requests().size();
  for (int times = 0; times < 2; ++times) CheckByHand(program);  // the second joins the first
  HWND progress = program.WaitForDialog(IDC_UPDATE_BAR);
  ASSERT_NE(progress, nullptr);
  PostCommand(progress, IDCANCEL);  // closes the window, not the check
  ASSERT_TRUE(WaitUntil([&] { return !::IsWindow(progress); }));
  ASSERT_NE(program.WaitForBox(kAvailable, kQuestion), nullptr);
  CheckByHand(program);  // brings the box forward
  EXPECT_TRUE(program.AnswerBox(kAvailable, kQuestion, IDNO));
  EXPECT_EQ(TextOf(link), L"Version 0.0.2.9 available. <a>Update now</a>");
  EXPECT_EQ(TestServer::Requests().substr(atStart), "/versioninfo/vantora/beta/ Vantora\n");

  TestServer::Use("unsigned");
  CheckByHand(program);
  EXPECT_TRUE(program.AnswerBox(kAvailable, kQuestion, IDYES));
  const wchar_t* failed = L"The update download failed. Please try again later or visit http";
  EXPECT_TRUE(program.AnswerBox(L"Vantora Update Error", failed, IDOK));
  EXPECT_FALSE(PathExists(server_.File()));
  EXPECT_EQ(program.DialogCount(), 1) << "of the boxes none is left, nor a second one";

  TestServer::Use("mute");
  const std::size_t before = TestServer::Requests().size();
  CheckByHand(program);
  ASSERT_NE(program.WaitForDialog(IDC_UPDATE_BAR), nullptr);
  ASSERT_TRUE(IsAskedFor("/versioninfo/", before));
  EXPECT_TRUE(program.End(3'000));
}

TEST_F(Updates, InstallOneAtATimeAndExitDoesNotWaitForIt) {
  TestServer::Use("stall");
  const RunningProgram program(L"/tray", program_);
  ASSERT_NE(shell_.WaitForBalloon(0), L"");
  program.PostToTray(UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK);
  ASSERT_TRUE(IsAskedFor("/files/"));
  const std::size_t before = TestServer::Requests().size();
  CheckByHand(program);
  EXPECT_TRUE(program.AnswerBox(kAvailable, kQuestion, IDYES));
  // A second installation would have asked before the check that is asked for after it.
  CheckByHand(program);
  EXPECT_NE(program.WaitForBox(kAvailable, kQuestion), nullptr);
  EXPECT_EQ(TestServer::Requests().find("/files/", before), std::string::npos);
  EXPECT_TRUE(program.End(3'000));
  EXPECT_FALSE(PathExists(server_.File())) << "nothing half written";
  EXPECT_FALSE(Finished().has_value());
}

}  // namespace
}  // namespace e2e
