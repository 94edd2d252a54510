// The update road over real internet functions, files and signatures, against the update server that with_update_server has
// started.

#include <gtest/gtest.h>
#include <windows.h>

#include "platform/handles.h"
#include "tests/support/diagnostic_lines.h"
#include "tests/support/profile.h"
#include "tests/support/wait.h"
#include "tests/update_server/test_server.h"
#include "update/update_check.h"
#include "update/update_install.h"
#include "update/update_values.h"
#include "update/version.h"

namespace {

constexpr wchar_t kGood[] = L"VANTORA_TEST_HTTPS";
constexpr wchar_t kStranger[] = L"VANTORA_TEST_STRANGER";

class UpdateRoad : public testing::Test {
 protected:
  UpdateRoad() {
    std::uint32_t error = 0;
    EXPECT_TRUE(done_.Create(Event::Reset::kAuto, error));
    profile_.Set(L"UpdateChecksDisabled", 0);
  }

  /// The latest version after one check, whose lines hold one that begins with the text.
  std::wstring Check(const wchar_t* line) {
    const DiagnosticLines lines;
    CheckForUpdatesThread(updates_, settings_, done_);
    EXPECT_EQ(done_.Wait(0), WaitResult::kSignaled);
    EXPECT_TRUE(lines.Has(line)) << testing::PrintToString(lines.Lines());
    return updates_.LatestVersion();
  }
  std::optional<e2e::RegistryValue> Finished() const { return profile_.Get(e2e::kSettings, L"UpdateFinished"); }
  void Plant(const std::wstring& path) const { ASSERT_EQ(WriteWholeFile(path, "planted"), WriteResult::kWritten); }

  const e2e::Profile profile_;
  const TestServer server_;
  UpdateState updates_;
  SettingsStore settings_;
  Event done_;
};

// What an answer's text may hold is update_check_test's and the fuzz target's.
TEST_F(UpdateRoad, CheckAsksTheChannelOfTheSettingsOverHttpsAloneOrNobody) {
  const struct {
    const char* scenario;
    const wchar_t* line;
    const wchar_t* latest = AppVersionDisplay;
    const wchar_t* server = kGood;
    bool betas = true;
  } kCases[] = {
      {"good", L"Returned download size of 9 bytes", L"0.0.2.9"},
      {"good", L"Returned download size of 7 bytes", L"0.0.2.8", kGood, false},
      {"to-https", L"Returned download size of 9 bytes", L"0.0.2.9"},
      {"missing", L"HTTP error 404 for URL: https://localhost:"},
      {"to-http", L"ERROR: answer did not come over https for URL: https:"},
      {"good", L"ERROR - AS_ERROR_CONNECT_GENERAL", AppVersionDisplay, kStranger},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.scenario << " " << c.server);
    TestServer::Use(c.scenario);
    TestServer::UseServer(c.server);
    settings_.Update([&](AppSettings& settings) { settings.includeBetas = c.betas; });
    updates_.SetLatestVersion(L"9.9.9.9");
    EXPECT_EQ(Check(c.line), c.latest);
  }
  constexpr char kFirstTwo[] = "/versioninfo/vantora/beta/ Vantora\n/versioninfo/vantora/ Vantora\n";
  const std::string asked = TestServer::Requests();
  EXPECT_TRUE(asked.starts_with(kFirstTwo)) << asked;
  profile_.Set(L"UpdateChecksDisabled", 1);
  CheckForUpdatesThread(updates_, settings_, done_);
  EXPECT_EQ(done_.Wait(0), WaitResult::kSignaled);
  EXPECT_EQ(TestServer::Requests(), asked);
}

BOOL WINAPI WriteHalf(HANDLE file, const void* bytes, DWORD count, DWORD* written, OVERLAPPED*) {
  return ::WriteFile(file, bytes, count / 2, written, nullptr);
}

/// What is on the disk is not what was downloaded.
BOOL WINAPI WriteOther(HANDLE file, const void* bytes, DWORD count, DWORD* written, OVERLAPPED*) {
  std::string other(static_cast<const char*>(bytes), count);
  other.back() = static_cast<char>(other.back() + 1);
  return ::WriteFile(file, other.data(), count, written, nullptr);
}

TEST_F(UpdateRoad, EachFailureOfTheInstallationLeavesNothing) {
  const auto takenBack = e2e::RegistryValue::Number(0);
  using Steps = InstallationSteps;
  using Fault = std::function<void(Steps & steps)>;
  const Fault none = [](Steps&) {};
  const Fault planted = [this](Steps& steps) {
    steps.verify = [this, verify = steps.verify](const std::wstring& path) {
      Plant(server_.Folder() + L"\\version.dll");
      return verify(path);
    };
  };
  const Fault noProcess = [](Steps& steps) { steps.launch = [](const auto&) { return LaunchResult{true, false}; }; };
  const Fault noMemory = [](Steps& steps) { steps.verify = [](const auto&) -> LONG { throw std::bad_alloc(); }; };
  const Fault link = [](Steps&) { TestServer::UseTemp(TestServer::Path(L"linked-temp")); };
  const Fault noFolder = [](Steps&) { TestServer::UseTemp(TestServer::Path(L"ca.cer")); };  // a file stands in its place
  const struct {
    const char* scenario;
    Fault fault;
    const wchar_t* line;
    std::optional<e2e::RegistryValue> finished = {};  ///< "UpdateFinished"
    bool started = false;                             ///< without a process, which counts as a start but brings no balloon
  } kCases[] = {
      {"empty", none, L"ERROR downloading file"},
      {"broken", none, L"ERROR: digital signature verification failed for "},
      {"unsigned", none, L"WinVerifyTrust failed with 0x800B0100 for "},
      {"tampered", none, L"WinVerifyTrust failed with 0x80096010 for "},
      {"unstartable", none, L"ERROR Launching ", takenBack},
      {"good", noProcess, L"ERROR Launching ", takenBack, true},
      {"good", [](Steps& steps) { steps.write = WriteHalf; }, L"ERROR writing file"},
      {"good", [](Steps& steps) { steps.write = WriteOther; }, L"ERROR: file was changed while it was written"},
      {"good", planted, L"ERROR: unexpected files beside "},
      {"good", noMemory, L"Download save path: "},
      {"good", link, L"ERROR: not a plain folder: "},
      {"good", noFolder, L"ERROR creating file"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.scenario << " " << c.line);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, e2e::kSettings);
    TestServer::Use(c.scenario);
    TestServer::UseTemp(server_.Temp());
    const DiagnosticLines lines;
    InstallationSteps steps = SystemInstallationSteps();
    c.fault(steps);
    EXPECT_EQ(DownloadAndInstallUpdate(steps, true), c.started);
    EXPECT_EQ(e2e::PathExists(server_.File()), c.started);
    EXPECT_TRUE(lines.Has(c.line)) << testing::PrintToString(lines.Lines());
    EXPECT_EQ(Finished(), c.finished);
  }
  TestServer::Use("empty");
  settings_.Update([](AppSettings& settings) { settings.includeBetas = false; });
  EXPECT_FALSE(DownloadAndInstallUpdate(settings_));
  EXPECT_TRUE(TestServer::Requests().ends_with("\n/files/vantorasetup.exe Vantora\n")) << TestServer::Requests();
  EXPECT_FALSE(e2e::PathExists(TestServer::Path(L"elsewhere\\vantorasetup.exe"))) << "written through the link";
}

TEST_F(UpdateRoad, InstallationStartsTheVerifiedInstallerAloneAndSilentlyAndNobodySwapsIt) {
  // Left by somebody else for the installer to load.
  ::CreateDirectoryW(server_.Folder().c_str(), nullptr);
  ::CreateDirectoryW((server_.File() + L".local").c_str(), nullptr);
  const std::wstring hidden = server_.Folder() + L"\\version.dll";
  const std::wstring other = server_.Temp() + L"\\other.exe";
  for (const std::wstring& planted : {hidden, server_.File() + L".local\\comctl32.dll", server_.File(), other}) Plant(planted);
  ::SetFileAttributesW(hidden.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);

  const auto folderMoves = [this] {
    return ::MoveFileW(server_.Folder().c_str(), (server_.Folder() + L".old").c_str()) != FALSE;
  };
  std::wstring marks;  // how often it was attacked, and what "UpdateFinished" then was
  const auto attack = [&] {
    const auto opensFor = [&](DWORD access) {
      const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
      return OwnFileHandle(::CreateFileW(server_.File().c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr)) != nullptr;
    };
    EXPECT_FALSE(opensFor(GENERIC_WRITE));
    EXPECT_FALSE(opensFor(DELETE));
    EXPECT_FALSE(::DeleteFileW(server_.File().c_str()));
    EXPECT_FALSE(::MoveFileExW(other.c_str(), server_.File().c_str(), MOVEFILE_REPLACE_EXISTING));
    EXPECT_FALSE(::MoveFileW(server_.File().c_str(), (server_.File() + L".old").c_str()));
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
  EXPECT_TRUE(e2e::PathExists(server_.File() + L".local\\comctl32.dll"));
  EXPECT_EQ(std::exchange(marks, {}), L"-");
  steps.isElevated = [] { return false; };
  const std::size_t before = TestServer::Requests().size();
  const DiagnosticLines lines;
  ASSERT_TRUE(DownloadAndInstallUpdate(steps, true));
  EXPECT_EQ(marks, L"-1") << "the installed program may start before the launch returns";
  EXPECT_EQ(server_.LaunchRecord(), server_.ProperLaunch());
  EXPECT_TRUE(lines.Has(L"Download save path: " + server_.File()));
  EXPECT_TRUE(lines.Has(L"Launching installer: " + server_.File()));
  EXPECT_EQ(TestServer::Requests().substr(before), "/files/beta/vantorasetup.exe Vantora\n");
  EXPECT_TRUE(TakeUpdateFinished());
  EXPECT_FALSE(TakeUpdateFinished());
  // The installer itself may take a moment more to end.
  EXPECT_TRUE(e2e::WaitUntil(folderMoves)) << "everything is let go afterwards";
}

}  // namespace
