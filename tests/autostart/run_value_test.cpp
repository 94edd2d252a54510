#include "autostart/run_value.h"

#include <gtest/gtest.h>

#include "autostart/executable_path.h"
#include "tests/support/profile.h"

TEST(RunValue, AnyValueCountsAsOnAndTogglingLeavesNothingOrOwnData) {
  const e2e::Profile profile;
  const auto value = [&profile] { return profile.Get(e2e::kRun, L"Vantora"); };
  ASSERT_NE(OwnExecutablePath().find(L' '), std::wstring::npos) << "the test is meant to lie in a folder with a blank";
  const auto own = e2e::RegistryValue::Text(L"\"" + OwnExecutablePath() + L"\" /tray");
  for (const auto& foreign : {e2e::RegistryValue::Text(L"\"other program.exe\""), e2e::RegistryValue::Number(7)}) {
    EXPECT_FALSE(IsStartWithWindowsEnabled());
    ToggleStartWithWindows();
    EXPECT_TRUE(IsStartWithWindowsEnabled());
    EXPECT_EQ(value(), own);
    profile.Set(e2e::kRun, L"Vantora", foreign);
    EXPECT_TRUE(IsStartWithWindowsEnabled());
    ToggleStartWithWindows();
    EXPECT_EQ(value(), std::nullopt);
  }
}
