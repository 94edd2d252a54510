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
constexpr wchar_t kNobody[] = L"VANTORA_TEST_NOBODY";

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

TEST_F(UpdateRoad, CheckReadsOrRejectsEveryAnswer) {
  const struct {
    const char* scenario;
    const wchar_t* line;
    const wchar_t* latest = AppVersionDisplay;
    const wchar_t* server = kGood;
  } kCases[] = {
      {"good", L"Returned download size of 9 bytes", L"0.0.2.9"},
      {"same", L"Returned download size of 7 bytes", L"0.0.2.7"},
      {"to-https", L"Returned download size of 9 bytes", L"0.0.2.9"},
      {"huge", L"Returned download size of 43 bytes", L"4294967295.4294967295.4294967295.4294967295"},
      {"missing", L"HTTP error 404 for URL: https://localhost:"},
      {"empty", L"ERROR checking update"},
      {"rubbish", L"WARNING: Invalid version string received: "},
      {"broken", L"WARNING: Invalid version string received: 0.0."},
      {"to-http", L"ERROR: answer did not come over https for URL: https:"},
      {"good", L"ERROR - AS_ERROR_CONNECT_GENERAL", AppVersionDisplay, kStranger},
      {"good", L"ERROR - AS_ERROR_CONNECT_GENERAL", AppVersionDisplay, kNobody},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.scenario << " " << c.server);
    TestServer::Use(c.scenario);
    TestServer::UseServer(c.server);
    updates_.SetLatestVersion(L"9.9.9.9");
    EXPECT_EQ(Check(c.line), c.latest);
  }
}

TEST_F(UpdateRoad, CheckAsksTheChannelOfTheSettingsOrNobody) {
  profile_.Set(L"UpdateChecksDisabled", 1);
  CheckForUpdatesThread(updates_, settings_, done_);
  EXPECT_EQ(done_.Wait(0), WaitResult::kSignaled);
  EXPECT_EQ(updates_.LatestVersion(), L"0.0.0.0");
  EXPECT_EQ(TestServer::Requests(), "");
  profile_.Set(L"UpdateChecksDisabled", 0);
  settings_.Update([](AppSettings& settings) { settings.includeBetas = false; });
  EXPECT_EQ(Check(L"Returned download size of 7 bytes"), L"0.0.2.8");
  EXPECT_EQ(TestServer::Requests(), "/versioninfo/vantora/ Vantora\n");
}

BOOL WINAPI WriteToFullDisk(HANDLE, const void*, DWORD, DWORD* written, OVERLAPPED*) {
  *written = 0;
  ::SetLastError(ERROR_DISK_FULL);
  return FALSE;
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
  using Break = std::function<void(InstallationSteps & steps)>;
  const auto server = [](const wchar_t* variable) -> Break { return [=](auto&) { TestServer::UseServer(variable); }; };
  const auto temp = [](const std::wstring& folder) -> Break { return [=](auto&) { TestServer::UseTemp(folder); }; };
  const auto writing = [](InstallerFile::WriteCall write) -> Break { return [=](auto& steps) { steps.write = write; }; };
  const Break nothing = [](InstallationSteps&) {};
  const Break planting = [this](InstallationSteps& steps) {
    steps.verify = [this, verify = steps.verify](const std::wstring& path) {
      Plant(server_.Folder() + L"\\version.dll");
      return verify(path);
    };
  };
  const Break noProcess = [](InstallationSteps& steps) { steps.launch = [](const auto&) { return LaunchResult{true, false}; }; };
  const struct {
    const char* scenario;
    Break breakIt;
    const wchar_t* line;
    std::optional<e2e::RegistryValue> finished = {};  ///< "UpdateFinished"
    bool started = false;                             ///< without a process, which counts as a start but brings no balloon
  } kCases[] = {
      {"missing", nothing, L"ERROR downloading file"},
      {"empty", nothing, L"ERROR downloading file"},
      {"to-http", nothing, L"ERROR downloading file"},
      {"good", server(kStranger), L"ERROR downloading file"},
      {"good", server(kNobody), L"ERROR downloading file"},
      {"broken", nothing, L"ERROR: digital signature verification failed for "},
      {"unsigned", nothing, L"WinVerifyTrust failed with 0x800B0100 for "},
      {"tampered", nothing, L"WinVerifyTrust failed with 0x80096010 for "},
      {"unstartable", nothing, L"ERROR Launching ", takenBack},
      {"good", noProcess, L"ERROR Launching ", takenBack, true},
      {"good", writing(WriteToFullDisk), L"ERROR writing file"},
      {"good", writing(WriteHalf), L"ERROR writing file"},
      {"good", writing(WriteOther), L"ERROR: file was changed while it was written"},
      {"good", planting, L"ERROR: unexpected files beside "},
      {"good", temp(TestServer::Path(L"linked-temp")), L"ERROR: not a plain folder: "},
      {"good", temp(server_.Temp() + L"\\nowhere"), L"ERROR creating file"},
      {"good", temp(TestServer::Path(L"ca.cer")), L"ERROR creating file"},  // a file stands where the folder should
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.scenario << " " << c.line);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, e2e::kSettings);
    TestServer::Use(c.scenario);
    TestServer::UseServer(kGood);
    TestServer::UseTemp(server_.Temp());
    const DiagnosticLines lines;
    InstallationSteps steps = SystemInstallationSteps();
    c.breakIt(steps);
    EXPECT_EQ(DownloadAndInstallUpdate(steps, true), c.started);
    EXPECT_EQ(e2e::PathExists(server_.File()), c.started);
    EXPECT_TRUE(lines.Has(c.line)) << testing::PrintToString(lines.Lines());
    EXPECT_EQ(Finished(), c.finished);
  }
  EXPECT_FALSE(e2e::PathExists(TestServer::Path(L"elsewhere\\vantorasetup.exe"))) << "written through the link";
  EXPECT_TRUE(e2e::NeverWithin(500, [this] { return server_.WasLaunched(); })) << "something was started";
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
  int refused = 0;
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
  // Elevated, somebody else's folder is not entered, so the update is refused; the protection is taken back.
  steps.isElevated = [] { return true; };
  EXPECT_FALSE(DownloadAndInstallUpdate(steps, true));
  EXPECT_TRUE(e2e::PathExists(server_.File() + L".local\\comctl32.dll"));
  EXPECT_EQ(std::exchange(refused, 0), 1);
  steps.isElevated = [] { return false; };
  const std::size_t before = TestServer::Requests().size();
  const DiagnosticLines lines;
  ASSERT_TRUE(DownloadAndInstallUpdate(steps, true));
  EXPECT_EQ(refused, 2);
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
