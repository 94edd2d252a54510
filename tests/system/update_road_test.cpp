// The update road over real internet functions, files and signatures, against the update server that with_update_server has
// started.

#include <gtest/gtest.h>
#include <windows.h>

#include "captured_lines.h"
#include "platform/file.h"
#include "platform/handles.h"
#include "storage/settings_registry.h"
#include "system/update_check.h"
#include "system/update_install.h"
#include "system/update_values.h"
#include "system/version_number.h"
#include "update_server/test_server.h"

namespace {

void SetNumber(const wchar_t* name, DWORD value) {
  ::RegSetKeyValueW(HKEY_CURRENT_USER, kSettingsKey, name, REG_DWORD, &value, sizeof value);
}

/// What the value "UpdateFinished" holds; -1 when there is none.
int UpdateFinished() {
  DWORD value = 0;
  DWORD size = sizeof value;
  const LSTATUS read =
      ::RegGetValueW(HKEY_CURRENT_USER, kSettingsKey, L"UpdateFinished", RRF_RT_REG_DWORD, nullptr, &value, &size);
  return read == ERROR_SUCCESS ? static_cast<int>(value) : -1;
}

class UpdateRoad : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server_.IsTrusted());
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kSettingsKey);
  }
  void TearDown() override { ::RegDeleteTreeW(HKEY_CURRENT_USER, kSettingsKey); }

  TestServer server_;
  SettingsStore settings_;
};

}  // namespace

TEST_F(UpdateRoad, CheckReadsOrRejectsEveryAnswer) {
  const struct {
    const wchar_t* server;
    const wchar_t* scenario;
    const wchar_t* latest;
    const wchar_t* line;
  } kCases[] = {
      {L"VANTORA_TEST_HTTPS", L"good", L"0.0.2.9", L"Returned download size of 9 bytes"},
      {L"VANTORA_TEST_HTTPS", L"wordy", L"0.0.2.9", L"Returned download size of 23 bytes"},
      {L"VANTORA_TEST_HTTPS", L"same", L"0.0.2.7", L"Returned download size of 7 bytes"},
      {L"VANTORA_TEST_HTTPS", L"to-https", L"0.0.2.9", L"Returned download size of 9 bytes"},
      {L"VANTORA_TEST_HTTPS", L"missing", AppVersionDisplay, L"HTTP error 404 for URL: https://localhost:"},
      {L"VANTORA_TEST_HTTPS", L"empty", AppVersionDisplay, L"ERROR checking update"},
      {L"VANTORA_TEST_HTTPS", L"nul", AppVersionDisplay, L"ERROR checking update"},
      {L"VANTORA_TEST_HTTPS", L"rubbish", AppVersionDisplay, L"WARNING: Invalid version string received: "},
      {L"VANTORA_TEST_HTTPS", L"huge", L"4294967295.4294967295.4294967295.4294967295", L"Returned download size of 43 bytes"},
      {L"VANTORA_TEST_HTTPS", L"broken", AppVersionDisplay, L"WARNING: Invalid version string received: 0.0."},
      {L"VANTORA_TEST_HTTPS", L"to-http", AppVersionDisplay, L"ERROR: answer did not come over https for URL: https:"},
      {L"VANTORA_TEST_STRANGER", L"good", AppVersionDisplay, L"ERROR - AS_ERROR_CONNECT_GENERAL"},
      {L"VANTORA_TEST_NOBODY", L"good", AppVersionDisplay, L"ERROR - AS_ERROR_CONNECT_GENERAL"},
  };
  Event done;
  std::uint32_t error = 0;
  ASSERT_TRUE(done.Create(Event::Reset::kAuto, error));
  for (const auto& c : kCases) {
    UpdateState updates;
    CapturedLines lines;
    TestServer::Use(c.scenario, c.server);
    CheckForUpdatesThread(updates, settings_, done);
    EXPECT_EQ(done.Wait(0), WaitResult::kSignaled) << c.scenario;
    EXPECT_EQ(updates.LatestVersion(), c.latest) << c.scenario;
    EXPECT_TRUE(lines.Has(c.line)) << testing::PrintToString(c.scenario) << testing::PrintToString(lines.Lines());
  }
}

TEST_F(UpdateRoad, CheckAsksTheChannelOfTheSettings) {
  Event done;
  UpdateState updates;
  settings_.Update([](AppSettings& settings) { settings.includeBetas = false; });
  CheckForUpdatesThread(updates, settings_, done);
  EXPECT_EQ(updates.LatestVersion(), L"0.0.2.8");
  EXPECT_EQ(TestServer::Requests(), "https /good/versioninfo/vantora/ Vantora\n");
}

TEST_F(UpdateRoad, CheckThatIsSwitchedOffAsksNobody) {
  Event done;
  std::uint32_t error = 0;
  ASSERT_TRUE(done.Create(Event::Reset::kAuto, error));
  UpdateState updates;
  SetNumber(L"UpdateChecksDisabled", 1);
  CheckForUpdatesThread(updates, settings_, done);
  EXPECT_EQ(done.Wait(0), WaitResult::kSignaled);
  EXPECT_EQ(updates.LatestVersion(), L"0.0.0.0");
  EXPECT_EQ(TestServer::Requests(), "");

  SetNumber(L"UpdateChecksDisabled", 0);
  CheckForUpdatesThread(updates, settings_, done);
  EXPECT_EQ(updates.LatestVersion(), L"0.0.2.9");
}

TEST_F(UpdateRoad, InstallationStartsTheVerifiedInstallerAloneAndSilently) {
  // Left by somebody else for the installer to load.
  ::CreateDirectoryW(server_.Folder().c_str(), nullptr);
  ::CreateDirectoryW((server_.File() + L".local").c_str(), nullptr);
  for (const std::wstring& planted :
       {server_.Folder() + L"\\version.dll", server_.File() + L".local\\comctl32.dll", server_.File()}) {
    ASSERT_EQ(WriteWholeFile(planted, "planted"), WriteResult::kWritten);
  }
  ::SetFileAttributesW((server_.Folder() + L"\\version.dll").c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);

  CapturedLines lines;
  ASSERT_TRUE(DownloadAndInstallUpdate(settings_));
  const std::vector<std::wstring> launched = server_.LaunchRecord();
  const std::vector<std::wstring> expected = {L"\"" + server_.File() + L"\" /S", L"C:\\windows\\system32", server_.File(),
                                              L"vantorasetup.exe"};
  EXPECT_EQ(launched, expected);
  EXPECT_EQ(UpdateFinished(), 1);
  EXPECT_TRUE(lines.Has(L"Download save path: " + server_.File()));
  EXPECT_TRUE(lines.Has(L"Launching installer: " + server_.File()));
  EXPECT_EQ(TestServer::Requests(), "https /good/files/beta/vantorasetup.exe Vantora\n");
  EXPECT_TRUE(TakeUpdateFinished());
  EXPECT_FALSE(TakeUpdateFinished());
}

TEST_F(UpdateRoad, EachFailureOfTheInstallationLeavesNothing) {
  struct Case {
    const wchar_t* server;
    const wchar_t* scenario;
    void (*breakIt)(InstallationSteps& steps);
    const wchar_t* line;
    int finished;
  };
  const auto nothing = [](InstallationSteps&) {};
  const Case kCases[] = {
      {L"VANTORA_TEST_HTTPS", L"missing", nothing, L"ERROR downloading file", -1},
      {L"VANTORA_TEST_HTTPS", L"empty", nothing, L"ERROR downloading file", -1},
      {L"VANTORA_TEST_HTTPS", L"to-http", nothing, L"ERROR downloading file", -1},
      {L"VANTORA_TEST_STRANGER", L"good", nothing, L"ERROR downloading file", -1},
      {L"VANTORA_TEST_NOBODY", L"good", nothing, L"ERROR downloading file", -1},
      {L"VANTORA_TEST_HTTPS", L"broken", nothing, L"ERROR: digital signature verification failed for ", -1},
      {L"VANTORA_TEST_HTTPS", L"unsigned", nothing, L"WinVerifyTrust failed with 0x800B0100 for ", -1},
      {L"VANTORA_TEST_HTTPS", L"tampered", nothing, L"WinVerifyTrust failed with 0x80096010 for ", -1},
      {L"VANTORA_TEST_HTTPS", L"unstartable", nothing, L"ERROR Launching ", 0},
      {L"VANTORA_TEST_HTTPS", L"good",
       [](InstallationSteps& steps) {
         steps.write = [](HANDLE, const void*, DWORD, DWORD* written, OVERLAPPED*) -> BOOL {
           *written = 0;
           ::SetLastError(ERROR_DISK_FULL);
           return FALSE;
         };
       },
       L"ERROR writing file", -1},
      {L"VANTORA_TEST_HTTPS", L"good",
       [](InstallationSteps& steps) {
         steps.write = [](HANDLE file, const void* bytes, DWORD count, DWORD* written, OVERLAPPED*) -> BOOL {
           return ::WriteFile(file, bytes, count / 2, written, nullptr);
         };
       },
       L"ERROR writing file", -1},
      {L"VANTORA_TEST_HTTPS", L"good",
       [](InstallationSteps& steps) {
         // What is on the disk is not what was downloaded.
         steps.write = [](HANDLE file, const void* bytes, DWORD count, DWORD* written, OVERLAPPED*) -> BOOL {
           std::string other(static_cast<const char*>(bytes), count);
           other.back() = static_cast<char>(other.back() + 1);
           return ::WriteFile(file, other.data(), count, written, nullptr);
         };
       },
       L"ERROR: file was changed while it was written", -1},
  };
  for (const Case& c : kCases) {
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kSettingsKey);
    TestServer::Use(c.scenario, c.server);
    CapturedLines lines;
    InstallationSteps steps = SystemInstallationSteps();
    c.breakIt(steps);
    EXPECT_FALSE(DownloadAndInstallUpdate(steps, true)) << c.scenario;
    EXPECT_TRUE(lines.Has(c.line)) << testing::PrintToString(c.scenario) << testing::PrintToString(lines.Lines());
    EXPECT_FALSE(Exists(server_.File())) << c.scenario << c.line;
    EXPECT_EQ(UpdateFinished(), c.finished) << c.scenario;
  }
  ::Sleep(500);
  EXPECT_FALSE(server_.WasLaunched()) << "something was started";
}

TEST_F(UpdateRoad, LaunchWithoutProcessCountsAsSuccessWithoutBalloon) {
  InstallationSteps steps = SystemInstallationSteps();
  steps.launch = [](const std::wstring&) { return LaunchResult{true, false}; };
  CapturedLines lines;
  EXPECT_TRUE(DownloadAndInstallUpdate(steps, true));
  EXPECT_EQ(UpdateFinished(), 0);
  EXPECT_TRUE(lines.Has(L"ERROR Launching " + server_.File()));
}

TEST_F(UpdateRoad, NobodySwapsTheFileOnceItIsVerified) {
  const std::wstring other = server_.Temp() + L"\\other.exe";
  ASSERT_EQ(WriteWholeFile(other, "other"), WriteResult::kWritten);
  int refused = 0;
  const auto attack = [&] {
    const auto openFor = [&](DWORD access) {
      const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
      return OwnFileHandle(::CreateFileW(server_.File().c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr)) != nullptr;
    };
    EXPECT_FALSE(openFor(GENERIC_WRITE));
    EXPECT_FALSE(openFor(DELETE));
    EXPECT_FALSE(::DeleteFileW(server_.File().c_str()));
    EXPECT_FALSE(::MoveFileExW(other.c_str(), server_.File().c_str(), MOVEFILE_REPLACE_EXISTING));
    EXPECT_FALSE(::MoveFileW(server_.File().c_str(), (server_.File() + L".old").c_str()));
    EXPECT_FALSE(::MoveFileW(server_.Folder().c_str(), (server_.Folder() + L".old").c_str()));
    EXPECT_TRUE(openFor(GENERIC_READ)) << "the system itself must get at it";
    ++refused;
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
  EXPECT_TRUE(DownloadAndInstallUpdate(steps, true));
  EXPECT_EQ(refused, 2);
  EXPECT_EQ(server_.LaunchRecord().size(), 4U);
  // The installer itself may take a moment more to end.
  bool movable = false;
  for (int tries = 0; !movable && tries < 100; ++tries) {
    movable = ::MoveFileW(server_.Folder().c_str(), (server_.Folder() + L".old").c_str()) != FALSE;
    if (!movable) ::Sleep(50);
  }
  EXPECT_TRUE(movable) << "everything is let go afterwards";
}

TEST_F(UpdateRoad, FilePlantedDuringVerificationStopsTheLaunch) {
  InstallationSteps steps = SystemInstallationSteps();
  steps.verify = [&, verify = steps.verify](const std::wstring& path) {
    EXPECT_EQ(WriteWholeFile(server_.Folder() + L"\\version.dll", "planted"), WriteResult::kWritten);
    return verify(path);
  };
  bool launched = false;
  steps.launch = [&](const std::wstring&) {
    launched = true;
    return LaunchResult{};
  };
  CapturedLines lines;
  EXPECT_FALSE(DownloadAndInstallUpdate(steps, true));
  EXPECT_FALSE(launched);
  EXPECT_TRUE(lines.Has(L"ERROR: unexpected files beside " + server_.File()));
  EXPECT_FALSE(Exists(server_.File()));
  EXPECT_EQ(UpdateFinished(), -1);
}

TEST_F(UpdateRoad, FolderThatIsALinkOrMissingIsRefused) {
  const struct {
    std::wstring temp;
    const wchar_t* line;
  } kCases[] = {
      {TestServer::Path(L"linked-temp"), L"ERROR: not a plain folder: "},
      {server_.Temp() + L"\\nowhere", L"ERROR creating file"},
      {TestServer::Path(L"ca.cer"), L"ERROR creating file"},  // a file stands where the folder should
  };
  for (const auto& [temp, line] : kCases) {
    TestServer::UseTemp(temp);
    CapturedLines lines;
    EXPECT_FALSE(DownloadAndInstallUpdate(settings_));
    EXPECT_TRUE(lines.Has(line)) << testing::PrintToString(lines.Lines());
    EXPECT_TRUE(lines.Has(L"ERROR creating file"));
  }
  EXPECT_FALSE(Exists(TestServer::Path(L"elsewhere\\vantorasetup.exe"))) << "written through the link";
  EXPECT_EQ(UpdateFinished(), -1);
}
