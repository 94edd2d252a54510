#include <gtest/gtest.h>

#include "platform/diagnostics.h"

TEST(DiagnosticChannel, HostLinesAreUtf8OnStderr) {
  testing::internal::CaptureStderr();
  DebugLog(L"first \u00e4%ls", L"\U0001F600");
  DebugLog(L"second");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "first \xC3\xA4\xF0\x9F\x98\x80\nsecond\n");
}
