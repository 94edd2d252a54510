#include "system/elevation.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr wchar_t kChildArgument[] = L"--end-after-a-moment-with-7";

/// This program started by the test of the real start: ends before any test runs.
const bool kIsChild = [] {
  if (std::wstring(::GetCommandLineW()).find(kChildArgument) == std::wstring::npos) return false;
  ::Sleep(300);
  ::ExitProcess(7);
}();

TEST(Elevation, WaitsForTheRealCopyOnlyWhenAsked) {
  const ULONGLONG start = ::GetTickCount64();
  DWORD exitCode = 1;
  EXPECT_TRUE(RunElevated(kChildArgument, true, &exitCode));
  EXPECT_EQ(exitCode, 7U);
  EXPECT_GE(::GetTickCount64() - start, 300U);
  EXPECT_TRUE(RunElevated(kChildArgument, true, nullptr));
  exitCode = 1;
  EXPECT_TRUE(RunElevated(kChildArgument, false, &exitCode));
  EXPECT_EQ(exitCode, 1U);
}

}  // namespace
