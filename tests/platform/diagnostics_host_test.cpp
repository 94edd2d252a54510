#include <gtest/gtest.h>

#include <algorithm>

#include "platform/diagnostics.h"

TEST(DiagnosticChannel, HostLinesAreCutAndGoToStderrAsUtf8) {
  for (const std::size_t length : {0u, 1021u, 1022u, 5000u}) {
    testing::internal::CaptureStderr();
    DebugLog(L"\u00e4%ls", std::wstring(length, L'x').c_str());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "\xC3\xA4" + std::string(std::min<std::size_t>(length, 1021), 'x') + "\n");
  }
}
