#include "system/elevation.h"

#include <gtest/gtest.h>

#include <string>

#include "system/elevation_system.h"
#include "system/executable_path.h"

namespace {

constexpr wchar_t kChildArgument[] = L"--end-after-a-moment-with-7";

/// This program started by the test of the real start: ends before any test runs.
const bool kIsChild = [] {
  if (std::wstring(::GetCommandLineW()).find(kChildArgument) == std::wstring::npos) return false;
  ::Sleep(300);
  ::ExitProcess(7);
}();

std::wstring requested;
BOOL accepts = FALSE;
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

/// Records the request; a start, too, gives no process to wait for.
BOOL WINAPI Record(SHELLEXECUTEINFOW* request) {
  requested = std::wstring(request->lpVerb) + L" " + request->lpFile + L" " + request->lpParameters;
  requested += L" " + std::to_wstring(request->nShow) + L" " + std::to_wstring(request->fMask);
  return accepts;
}

class Elevation : public testing::Test {
 protected:
  ~Elevation() override { SetElevationSystem(nullptr); }

  const ElevationSystem system_{OpenToken, TellToken, Record};
};

TEST_F(Elevation, IsWhatTheTokenSaysAndFalseWhenItSaysNothing) {
  SetElevationSystem(&system_);
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

TEST_F(Elevation, AsksForAnElevatedCopyOfThisProgram) {
  SetElevationSystem(&system_);
  for (const bool wait : {false, true}) {
    DWORD exitCode = 1;
    accepts = wait;
    EXPECT_EQ(RunElevated(L"-restart", wait, &exitCode), wait);
    EXPECT_EQ(exitCode, 1U);
    const std::wstring mask = std::to_wstring(wait ? SEE_MASK_NOCLOSEPROCESS : 0);
    EXPECT_EQ(requested, L"runas " + OwnExecutablePath() + L" -restart " + std::to_wstring(SW_SHOWNORMAL) + L" " + mask);
  }
}

TEST_F(Elevation, WaitsForTheRealCopyOnlyWhenAsked) {
  const ULONGLONG start = ::GetTickCount64();
  DWORD exitCode = 1;
  EXPECT_TRUE(RunElevated(kChildArgument, true, &exitCode));
  EXPECT_EQ(exitCode, 7U);
  EXPECT_GE(::GetTickCount64() - start, 300U);
  exitCode = 1;
  EXPECT_TRUE(RunElevated(kChildArgument, false, &exitCode));
  EXPECT_EQ(exitCode, 1U);
}

}  // namespace
