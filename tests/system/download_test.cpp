#include "system/download.h"

#include <gtest/gtest.h>

#include "captured_lines.h"
#include "fake_http_client.h"
#include "limited_memory.h"

namespace {

constexpr wchar_t kUrl[] = L"https://localhost/file";

std::string Pattern(std::size_t bytes) {
  std::string pattern(bytes, '\0');
  for (std::size_t i = 0; i < bytes; ++i) pattern[i] = static_cast<char>(i * 31 % 251);
  return pattern;
}

}  // namespace

TEST(Download, FailsWhereTheAnswerDidNotComeOverHttps) {
  for (const wchar_t* address : {L"http://localhost/file", L"", L"httpsx://localhost/"}) {
    FakeHttpClient http;
    http.body = "0.0.2.9";
    http.answeringUrl = address;
    std::string body = "left over";
    EXPECT_FALSE(DownloadFile(http, kUrl, body)) << testing::PrintToString(address);
    EXPECT_EQ(body, "");
    EXPECT_EQ(http.closes, 1);
  }
}

TEST(Download, KeepsWhatAnAnswerGaveBeforeItStalledAndNeedsNoReadableStatus) {
  FakeHttpClient http;
  http.status.reset();
  http.answeringUrl = L"HTTPS://localhost/elsewhere";
  http.body = Pattern(100'000);
  http.brokenAt = 40'000;
  std::string body;
  EXPECT_TRUE(DownloadFile(http, kUrl, body));
  EXPECT_EQ(body, http.body.substr(0, 40'000));
  EXPECT_EQ(http.timeoutMs, 30'000U) << "set before the address was opened";
}

TEST(Download, FailsWhenMemoryCannotBeHad) {
  FakeHttpClient http;
  http.body = Pattern(3'000'000);
  CapturedLines lines;
  std::string body;
  {
    const LimitedMemory limited(1'000'000);
    EXPECT_FALSE(DownloadFile(http, kUrl, body));
  }
  EXPECT_EQ(body.capacity(), std::string().capacity()) << "what was had is given back";
  EXPECT_EQ(http.closes, 1);
  EXPECT_TRUE(lines.Has(L"ERROR: no memory for the download"));
}
