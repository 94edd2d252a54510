#pragma once

// What every end-to-end test starts from: an empty profile, a taskbar that records, the diagnostic lines of what it starts, and
// nobody else's instance running.

#include <gtest/gtest.h>

#include "tests/support/debug_lines.h"
#include "tests/support/profile.h"
#include "tests/support/running_program.h"
#include "tests/support/shell_stand_in.h"

namespace e2e {

class EndToEndTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(ProfileIsThrowaway()) << "this profile is not the tests' own";
    ASSERT_EQ(::FindWindowW(kTrayClass, kTrayTitle), nullptr) << "an instance is running";
    ASSERT_TRUE(shell_.IsInPlace());
  }

  Profile profile_;
  ShellStandIn shell_;
  DebugLines debug_;
};

}  // namespace e2e
