// Updates as the user meets them, by the built program against the update server that with_update_server has started: the
// balloon, the progress window, the question, what is seen when they fail, and the end of the program in the middle of them. That
// they succeed is shown with the real installer.

#include <windows.h>

#include <shellapi.h>

#include "tests/support/program_test.h"
#include "tests/update_server/test_server.h"

namespace e2e {
namespace {

using Updates = EndToEndTest;

TEST_F(Updates, AreAskedForToldAndInstalledOneAtATimeAndTheProgramEndsWithoutWaitingForThem) {
  const wchar_t* available = L"Vantora Update Available";
  const wchar_t* question = L"Version 0.0.2.9 is available. Update now?";
  const auto isAskedFor = [](const char* part, std::size_t after) {
    return WaitUntil([&] { return TestServer::Requests().find(part, after) != std::string::npos; });
  };
  const TestServer server;
  TestServer::Use("missing");
  profile_.Set(L"UpdateChecksDisabled", 0);
  // The program of the build, but for where it looks for updates.
  const RunningProgram program(L"", FullPath(VANTORA_UPDATED_EXE));
  const auto checkByHand = [&program] { program.PostToTray(UWM_CHECK_FOR_UPDATES, 1, 0); };
  HWND link = ::GetDlgItem(program.WaitForMainWindow(), IDC_VERSION_LINK);
  ASSERT_TRUE(debug_.WaitFor(program.Id(), "Update check finished."));

  TestServer::Use("mute");
  const std::size_t atStart = TestServer::Requests().size();
  for (int times = 0; times < 2; ++times) checkByHand();  // the second joins the first
  HWND progress = program.WaitForDialog(IDC_UPDATE_BAR);
  ASSERT_NE(progress, nullptr);
  PostCommand(progress, IDCANCEL);  // closes the window, not the check
  ASSERT_TRUE(WaitUntil([&] { return !::IsWindow(progress); }));
  TestServer::Use("good");
  ASSERT_NE(program.WaitForBox(available, question), nullptr);
  checkByHand();  // brings the box forward
  EXPECT_TRUE(program.AnswerBox(available, question, IDNO));
  EXPECT_EQ(TextOf(link), L"Version 0.0.2.9 available. <a>Update now</a>");

  TestServer::Use("missing");
  checkByHand();
  EXPECT_TRUE(program.AnswerBox(L"Vantora", L"No updates available. You are running the latest version.", IDOK));
  EXPECT_TRUE(WaitUntil([&] { return TextOf(link) == L"Version 0.0.2.7 BETA. <a>Check for updates</a>"; }));
  const std::string asked = "/versioninfo/vantora/beta/ Vantora\n";
  EXPECT_EQ(TestServer::Requests().substr(atStart), asked + asked);

  TestServer::Use("unsigned");
  checkByHand();
  EXPECT_TRUE(program.AnswerBox(available, question, IDYES));
  const wchar_t* failed = L"The update download failed. Please try again later or visit http";
  EXPECT_TRUE(program.AnswerBox(L"Vantora Update Error", failed, IDOK));
  EXPECT_EQ(program.DialogCount(), 1) << "of the boxes none is left, nor a second one";
  EXPECT_TRUE(shell_.Calls(L"balloon").empty());

  TestServer::Use("stall");
  const std::size_t atBalloon = TestServer::Requests().size();
  program.PostToTray(UWM_CHECK_FOR_UPDATES, 0, 0);
  ASSERT_NE(shell_.WaitForBalloon(0), L"");
  program.PostToTray(UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK);
  ASSERT_TRUE(isAskedFor("/files/", atBalloon));
  const std::size_t atDownload = TestServer::Requests().size();
  checkByHand();
  EXPECT_TRUE(program.AnswerBox(available, question, IDYES));
  // A second installation would have asked before the check that is asked for after it.
  checkByHand();
  EXPECT_TRUE(program.AnswerBox(available, question, IDNO));
  EXPECT_EQ(TestServer::Requests().find("/files/", atDownload), std::string::npos);

  TestServer::Use("mute");
  const std::size_t atEnd = TestServer::Requests().size();
  checkByHand();
  ASSERT_TRUE(isAskedFor("/versioninfo/", atEnd));
  EXPECT_TRUE(program.End(3'000));
  EXPECT_FALSE(PathExists(TestServer::File()));
  EXPECT_FALSE(profile_.Get(kSettings, L"UpdateFinished").has_value());
}

}  // namespace
}  // namespace e2e
