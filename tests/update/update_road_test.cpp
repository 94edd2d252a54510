// What no journey can make happen to an installation: its steps fail, and somebody wants to swap the verified installer. With
// real files and signatures, against the update server that with_update_server has started.

#include <gtest/gtest.h>

#include "platform/handles.h"
#include "tests/support/debug_lines.h"
#include "tests/support/diagnostic_lines.h"
#include "tests/support/profile.h"
#include "tests/support/wait.h"
#include "tests/tables/table_text.h"
#include "tests/update_server/test_server.h"
#include "update/installer_start.h"
#include "update/update_install.h"
#include "update/update_values.h"

namespace {

class UpdateRoad : public testing::Test {
 protected:
  /// "UpdateFinished", or nothing.
  static std::wstring Finished() { return e2e::Profile::Values(e2e::kSettings)[L"UpdateFinished"].second; }

  const e2e::Profile profile_;
  const TestServer server_;
  const DiagnosticLines lines_;
  InstallationSteps steps_ = SystemInstallationSteps();
};

TEST_F(UpdateRoad, AStepThatFailsLeavesNothing) {
  using Steps = InstallationSteps;
  const auto writeHalf = [](HANDLE file, const void* bytes, DWORD count, DWORD* written, OVERLAPPED*) {
    return ::WriteFile(file, bytes, count / 2, written, nullptr);
  };
  const auto writeZeros = [](HANDLE file, const void*, DWORD count, DWORD* written, OVERLAPPED*) {
    return ::WriteFile(file, std::string(count, '\0').data(), count, written, nullptr);
  };
  const auto plant = [this](const std::wstring& path) {
    (void)WriteWholeFile(TestServer::Folder() + L"\\version.dll", "planted");
    return steps_.verify(path);
  };
  const auto launch = [](bool accepted) { return [accepted](auto&) { return LaunchResult{accepted, false}; }; };
  const struct {
    std::function<void(Steps& steps)> fault;
    const wchar_t* line;
    const wchar_t* finished = L"";
    bool started = false;
  } kCases[] = {
      {[&](Steps& s) { s.launch = launch(false); }, L"ERROR Launching ", L"0"},
      // Without a process it counts as a start, but brings no balloon.
      {[&](Steps& s) { s.launch = launch(true); }, L"ERROR Launching ", L"0", true},
      {[&](Steps& s) { s.write = writeHalf; }, L"ERROR writing file"},
      {[&](Steps& s) { s.write = writeZeros; }, L"ERROR: file was changed while it was written"},
      {[&](Steps& s) { s.verify = plant; }, L"ERROR: unexpected files beside "},
      {[](Steps& s) { s.verify = [](auto&) -> LONG { throw std::bad_alloc(); }; }, L"Download save path: "},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.line);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, e2e::kSettings);
    Steps steps = steps_;
    c.fault(steps);
    EXPECT_EQ(DownloadAndInstallUpdate(steps, true), c.started);
    EXPECT_EQ(e2e::PathExists(TestServer::File()), c.started);
    const std::wstring said = L"; " + Join(DiagnosticLines::Take());
    EXPECT_NE(said.find(L"; " + std::wstring(c.line)), std::wstring::npos) << testing::PrintToString(said);
    EXPECT_EQ(Finished(), c.finished);
  }
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
    marks += Finished().empty() ? L"-" : Finished();
  };
  steps_.verify = [&, verify = steps_.verify](const std::wstring& path) {
    attack();
    return verify(path);
  };
  steps_.launch = [&, launch = steps_.launch](const std::wstring& path) {
    attack();
    return launch(path);
  };
  // Elevated, somebody else's folder is not entered, so the update is refused; the protection is taken back.
  steps_.isElevated = [] { return true; };
  EXPECT_FALSE(DownloadAndInstallUpdate(steps_, true));
  EXPECT_TRUE(e2e::PathExists(local));
  steps_.isElevated = [] { return false; };
  const e2e::DebugLines started;
  ASSERT_TRUE(DownloadAndInstallUpdate(steps_, true));
  EXPECT_EQ(marks, L"--1") << "the installed program may start before the launch returns";
  const std::string launch = "\"" + std::filesystem::path(file).string() + "\" /S in C:\\windows\\system32";
  EXPECT_TRUE(e2e::WaitUntil([&] { return started.All().find(launch) != std::string::npos; })) << started.All();
  EXPECT_TRUE(TakeUpdateFinished());
  EXPECT_FALSE(TakeUpdateFinished());
  // The installer itself may take a moment more to end.
  EXPECT_TRUE(e2e::WaitUntil(folderMoves)) << "everything is let go afterwards";
}

}  // namespace
