#include <gtest/gtest.h>

#include <string>

#include "platform/diagnostics.h"

TEST(DiagnosticChannel, HostLinesAreUtf8OnStderrAndCut) {
  testing::internal::CaptureStderr();
  DebugLog(L"first \u00e4%ls", L"\U0001F600");
  for (const std::size_t length : {1022u, 1023u, 5000u}) DebugLog(L"%ls", std::wstring(length, L'x').c_str());
  const std::string cut(1022, 'x');
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "first \xC3\xA4\xF0\x9F\x98\x80\n" + cut + "\n" + cut + "\n" + cut + "\n");
}
