// The update road over real internet functions, files and signatures, against the update server that with_update_server has
// started.

#include <gtest/gtest.h>
#include <windows.h>

#include "platform/handles.h"
#include "tests/support/debug_lines.h"
#include "tests/support/diagnostic_lines.h"
#include "tests/support/profile.h"
#include "tests/support/wait.h"
#include "tests/update_server/test_server.h"
#include "update/installer_start.h"
#include "update/update_check.h"
#include "update/update_install.h"
#include "update/update_values.h"
#include "update/version.h"

namespace {

class UpdateRoad : public testing::Test {
 protected:
  UpdateRoad() { profile_.Set(L"UpdateChecksDisabled", 0); }

  /// One check from its beginning to its end.
  void Check() {
    Event done;
    std::uint32_t error = 0;
    ASSERT_TRUE(done.Create(Event::Reset::kAuto, error));
    CheckForUpdatesThread(updates_, settings_, done);
    EXPECT_EQ(done.Wait(0), WaitResult::kSignaled);
  }
  void UseBetas(bool betas) {
    settings_.Update([betas](AppSettings& settings) { settings.includeBetas = betas; });
  }
  std::optional<e2e::RegistryValue> Finished() const { return profile_.Get(e2e::kSettings, L"UpdateFinished"); }

  const e2e::Profile profile_;
  const TestServer server_;
  UpdateState updates_;
  SettingsStore settings_;
};

// What an answer's text may hold is update_check_test's and the fuzz target's.
TEST_F(UpdateRoad, CheckAsksTheChannelOfTheSettingsOverHttpsAloneOrNobody) {
  const wchar_t* good = L"VANTORA_TEST_HTTPS";
  const struct {
    const char* scenario;
    const wchar_t* server;
    bool betas;
    const wchar_t* line;
    const wchar_t* latest;
  } kCases[] = {
      {"good", good, true, L"Returned download size of 9 bytes", L"0.0.2.9"},
      {"to-https", good, false, L"Returned download size of 7 bytes", L"0.0.2.8"},
      {"missing", good, true, L"HTTP error 404 for URL: https://localhost:", AppVersionDisplay},
      {"to-http", good, true, L"ERROR: answer did not come over https for URL: https:", AppVersionDisplay},
      {"good", L"VANTORA_TEST_STRANGER", true, L"ERROR - AS_ERROR_CONNECT_GENERAL", AppVersionDisplay},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.scenario << " " << c.server);
    TestServer::Use(c.scenario);
    TestServer::UseServer(c.server);
    UseBetas(c.betas);
    updates_.SetLatestVersion(L"9.9.9.9");
    const DiagnosticLines lines;
    Check();
    EXPECT_TRUE(lines.Has(c.line)) << testing::PrintToString(lines.Lines());
    EXPECT_EQ(updates_.LatestVersion(), c.latest);
  }
  const std::string asked = TestServer::Requests();
  EXPECT_TRUE(asked.starts_with("/versioninfo/vantora/beta/ Vantora\n/versioninfo/vantora/ Vantora\n")) << asked;
  TestServer::UseServer(good);
  profile_.Set(L"UpdateChecksDisabled", 1);
  Check();
  EXPECT_EQ(TestServer::Requests(), asked);
}

TEST_F(UpdateRoad, EachFailureOfTheInstallationLeavesNothing) {
  const auto takenBack = e2e::RegistryValue::Number(0);
  using Steps = InstallationSteps;
  const auto writeHalf = [](HANDLE file, const void* bytes, DWORD count, DWORD* written, OVERLAPPED*) {
    return ::WriteFile(file, bytes, count / 2, written, nullptr);
  };
  const auto writeZeros = [](HANDLE file, const void*, DWORD count, DWORD* written, OVERLAPPED*) {
    return ::WriteFile(file, std::string(count, '\0').data(), count, written, nullptr);
  };
  const auto planted = [](const std::wstring& path) {
    (void)WriteWholeFile(TestServer::Folder() + L"\\version.dll", "planted");
    return SystemInstallationSteps().verify(path);
  };
  const struct {
    const char* scenario;
    std::function<void(Steps& steps)> fault;
    const wchar_t* line;
    std::optional<e2e::RegistryValue> finished = {};  ///< "UpdateFinished"
    bool started = false;                             ///< without a process, which counts as a start but brings no balloon
  } kCases[] = {
      {"empty", [](Steps&) {}, L"ERROR downloading file"},
      {"unsigned", [](Steps&) {}, L"WinVerifyTrust failed with 0x800B0100 for "},
      {"tampered", [](Steps&) {}, L"WinVerifyTrust failed with 0x80096010 for "},
      {"good", [](Steps& s) { s.launch = [](auto&) {
                                return LaunchResult{false, false};
                              }; }, L"ERROR Launching ", takenBack},
      {"good", [](Steps& s) { s.launch = [](auto&) {
                                return LaunchResult{true, false};
                              }; }, L"ERROR Launching ", takenBack,
       true},
      {"good", [&](Steps& s) { s.write = writeHalf; }, L"ERROR writing file"},
      {"good", [&](Steps& s) { s.write = writeZeros; }, L"ERROR: file was changed while it was written"},
      {"good", [&](Steps& s) { s.verify = planted; }, L"ERROR: unexpected files beside "},
      {"good", [](Steps& s) { s.verify = [](auto&) -> LONG { throw std::bad_alloc(); }; }, L"Download save path: "},
      {"good", [](Steps&) { TestServer::UseTemp(TestServer::Path(L"linked-temp")); }, L"ERROR: not a plain folder: "},
      // A file stands in its place.
      {"good", [](Steps&) { TestServer::UseTemp(TestServer::Path(L"https.cer")); }, L"ERROR creating file"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.scenario << " " << c.line);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, e2e::kSettings);
    TestServer::Use(c.scenario);
    TestServer::UseTemp(TestServer::Temp());
    const DiagnosticLines lines;
    InstallationSteps steps = SystemInstallationSteps();
    c.fault(steps);
    EXPECT_EQ(DownloadAndInstallUpdate(steps, true), c.started);
    EXPECT_EQ(e2e::PathExists(TestServer::File()), c.started);
    EXPECT_TRUE(lines.Has(c.line)) << testing::PrintToString(lines.Lines());
    EXPECT_EQ(Finished(), c.finished);
  }
  EXPECT_FALSE(e2e::PathExists(TestServer::Path(L"elsewhere\\vantorasetup.exe"))) << "written through the link";
  TestServer::Use("empty");
  UseBetas(false);
  EXPECT_FALSE(DownloadAndInstallUpdate(settings_));
  EXPECT_TRUE(TestServer::Requests().ends_with("\n/files/vantorasetup.exe Vantora\n")) << TestServer::Requests();
  for (const bool elevated : {false, true}) EXPECT_FALSE(LaunchInstaller(TestServer::Path(L"missing.exe"), elevated).accepted);
}

TEST_F(UpdateRoad, InstallationStartsTheVerifiedInstallerAloneAndSilentlyAndNobodySwapsIt) {
  const std::wstring file = TestServer::File();
  const std::wstring folder = TestServer::Folder();
  // Left by somebody else for the installer to load.
  std::filesystem::create_directories(file + L".local");
  const std::wstring hidden = folder + L"\\version.dll";
  const std::wstring local = file + L".local\\comctl32.dll";
  const std::wstring other = TestServer::Temp() + L"\\other.exe";
  for (const std::wstring& planted : {hidden, local, file, other}) (void)WriteWholeFile(planted, "planted");
  ::SetFileAttributesW(hidden.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);

  const auto folderMoves = [&] { return ::MoveFileW(folder.c_str(), (folder + L".old").c_str()) != FALSE; };
  std::wstring marks;  // how often it was attacked, and what "UpdateFinished" then was
  const auto attack = [&] {
    const auto opensFor = [&](DWORD access) {
      const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
      return OwnFileHandle(::CreateFileW(file.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr)) != nullptr;
    };
    EXPECT_FALSE(opensFor(GENERIC_WRITE));
    EXPECT_FALSE(opensFor(DELETE));
    EXPECT_FALSE(::MoveFileExW(other.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING));
    EXPECT_FALSE(folderMoves());
    EXPECT_TRUE(opensFor(GENERIC_READ)) << "the system itself must get at it";
    marks += Finished() == e2e::RegistryValue::Number(1) ? L"1" : L"-";
  };
  InstallationSteps steps = SystemInstallationSteps();
  steps.verify = [&, verify = steps.verify](const std::wstring& path) {
    attack();
    return verify(path);
  };
  steps.launch = [&, launch = steps.launch](const std::wstring& path) {
    attack();
    return launch(path);
  };
  // Elevated, somebody else's folder is not entered, so the update is refused; the protection is taken back.
  steps.isElevated = [] { return true; };
  EXPECT_FALSE(DownloadAndInstallUpdate(steps, true));
  EXPECT_TRUE(e2e::PathExists(local));
  steps.isElevated = [] { return false; };
  const e2e::DebugLines started;
  const DiagnosticLines lines;
  ASSERT_TRUE(DownloadAndInstallUpdate(steps, true));
  EXPECT_EQ(marks, L"--1") << "the installed program may start before the launch returns";
  EXPECT_TRUE(lines.Has(L"Launching installer: " + file));
  const std::string launch = "\"" + std::filesystem::path(file).string() + "\" /S in C:\\windows\\system32";
  EXPECT_TRUE(e2e::WaitUntil([&] { return started.All().find(launch) != std::string::npos; })) << started.All();
  EXPECT_TRUE(TestServer::Requests().ends_with("\n/files/beta/vantorasetup.exe Vantora\n")) << TestServer::Requests();
  EXPECT_TRUE(TakeUpdateFinished());
  EXPECT_FALSE(TakeUpdateFinished());
  // The installer itself may take a moment more to end.
  EXPECT_TRUE(e2e::WaitUntil(folderMoves)) << "everything is let go afterwards";
}

}  // namespace
