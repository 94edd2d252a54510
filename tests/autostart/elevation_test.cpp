#include "autostart/elevation.h"

#include <gtest/gtest.h>

#include <string>

#include "autostart/elevation_system.h"
#include "autostart/executable_path.h"

namespace {

constexpr wchar_t kChildArgument[] = L"--end-at-once-with-7";

/// This program started by the test of the real start: ends before any test runs.
const bool kIsChild = [] {
  if (std::wstring(::GetCommandLineW()).find(kChildArgument) == std::wstring::npos) return false;
  ::ExitProcess(7);
}();

std::wstring requested;
bool accepts = true;
bool tokenOpens = true;
bool tokenTells = true;
DWORD elevated = 0;

BOOL WINAPI OpenToken(HANDLE process, DWORD access, HANDLE* token) {
  return tokenOpens && access == TOKEN_QUERY && ::OpenProcessToken(process, access, token);
}

BOOL WINAPI TellToken(HANDLE, TOKEN_INFORMATION_CLASS kind, void* data, DWORD sizeBytes, DWORD*) {
  if (kind != TokenElevation || sizeBytes != sizeof(DWORD)) return FALSE;
  *static_cast<DWORD*>(data) = elevated;  // left behind even by a failing call
  return tokenTells;
}

BOOL WINAPI Start(SHELLEXECUTEINFOW* request) {
  requested = std::wstring(request->lpVerb) + L" " + request->lpFile + L" " + request->lpParameters;
  requested += L" " + std::to_wstring(request->nShow) + L" " + std::to_wstring(request->fMask);
  return accepts && ::ShellExecuteExW(request);
}

class Elevation : public testing::Test {
 protected:
  Elevation() { SetElevationSystem(&system_); }
  ~Elevation() override { SetElevationSystem(nullptr); }

  const ElevationSystem system_{OpenToken, TellToken, Start};
};

TEST_F(Elevation, IsWhatTheTokenSaysAndFalseWhenItSaysNothing) {
  const struct {
    bool opens, tells;
    DWORD value;
    bool result;
  } rows[] = {{true, true, 1, true}, {true, true, 0, false}, {false, true, 1, false}, {true, false, 1, false}};
  for (const auto& row : rows) {
    tokenOpens = row.opens;
    tokenTells = row.tells;
    elevated = row.value;
    EXPECT_EQ(IsProcessElevated(), row.result) << row.opens << row.tells << row.value;
  }
}

TEST_F(Elevation, AsksForAnElevatedCopyOfThisProgramAndWaitsForItOnlyWhenAsked) {
  for (const auto& [wait, accepted] : {std::pair{true, true}, {true, false}, {false, true}}) {
    SCOPED_TRACE(testing::Message() << wait << accepted);
    accepts = accepted;
    DWORD exitCode = 1;
    EXPECT_EQ(RunElevated(kChildArgument, wait, &exitCode), accepted);
    EXPECT_EQ(exitCode, wait && accepted ? 7U : 1U);
    const std::wstring mask = std::to_wstring(wait ? SEE_MASK_NOCLOSEPROCESS : 0);
    EXPECT_EQ(requested,
              L"runas " + OwnExecutablePath() + L" " + kChildArgument + L" " + std::to_wstring(SW_SHOWNORMAL) + L" " + mask);
  }
}

}  // namespace
