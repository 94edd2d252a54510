#include "update/download.h"

#include <gtest/gtest.h>

#include "tests/support/diagnostic_lines.h"
#include "tests/support/fake_http_client.h"
#include "tests/support/limited_memory.h"

namespace {

constexpr wchar_t kUrl[] = L"https://localhost/file";

std::string Pattern(std::size_t bytes) {
  std::string pattern(bytes, '\0');
  for (std::size_t i = 0; i < bytes; ++i) pattern[i] = static_cast<char>(i * 31 % 251);
  return pattern;
}

}  // namespace

TEST(Download, ReturnsTheBodyWhateverItsSizeAndPiecesAsFarAsItCame) {
  for (const std::size_t size : {0U, 1U, 16'383U, 16'384U, 16'385U, 1'000'000U}) {
    for (const std::size_t piece : {std::size_t{1'000}, std::string::npos}) {
      FakeHttpClient http;
      http.body = Pattern(size);
      http.pieceBytes = piece;
      if (piece != std::string::npos) {  // stalls, and tells no status
        http.body += "never read";
        http.brokenAt = size;
        http.status.reset();
        http.answeringUrl = L"HTTPS://localhost/elsewhere";
      }
      DiagnosticLines lines;
      std::string body = "left over";
      ASSERT_TRUE(DownloadFile(http, kUrl, body));
      EXPECT_EQ(body, Pattern(size));
      EXPECT_EQ(http.largestRead, 16'384U);
      EXPECT_EQ(http.timeoutMs, 30'000U) << "set before the address was opened";
      EXPECT_EQ(http.closes, 1);
      const std::vector<std::wstring> expected = {L"DownloadFile URL: https://localhost/file\n",
                                                  L"Returned download size of " + std::to_wstring(size) + L" bytes"};
      EXPECT_EQ(lines.Lines(), expected);
    }
  }
}

TEST(Download, FailsWhereTheAnswerCannotBeTrustedOrKept) {
  const struct {
    const char* name;
    void (*breakIt)(FakeHttpClient&);
    const wchar_t* line;
  } kCases[] = {
      {"no session", [](FakeHttpClient& http) { http.sessionOpens = false; }, L"\n ERROR: Open Internet 1"},
      {"no connection", [](FakeHttpClient& http) { http.urlOpens = false; }, L"ERROR - AS_ERROR_CONNECT_GENERAL"},
      {"not found", [](FakeHttpClient& http) { http.status = 404; }, L"HTTP error 404 for URL: https://localhost/file"},
      {"no content", [](FakeHttpClient& http) { http.status = 204; }, L"HTTP error 204 for URL: https://localhost/file"},
      {"redirected to http", [](FakeHttpClient& http) { http.answeringUrl = L"http://localhost/file"; },
       L"ERROR: answer did not"},
      {"unknown address", [](FakeHttpClient& http) { http.answeringUrl.clear(); }, L"ERROR: answer did not"},
      {"look-alike scheme", [](FakeHttpClient& http) { http.answeringUrl = L"httpsx://localhost/"; }, L"ERROR: answer did not"},
      {"no memory", [](FakeHttpClient& http) { http.body = Pattern(3'000'000); }, L"ERROR: no memory for the download"},
  };
  for (const auto& c : kCases) {
    FakeHttpClient http;
    http.body = "0.0.2.9";
    c.breakIt(http);
    DiagnosticLines lines;
    std::string body = "left over";
    {
      const LimitedMemory limited(1'000'000);
      EXPECT_FALSE(DownloadFile(http, kUrl, body)) << c.name;
    }
    EXPECT_EQ(body, "") << c.name;
    EXPECT_LT(body.capacity(), 1'000U) << c.name << ": what was had is given back";
    EXPECT_TRUE(lines.Has(c.line)) << c.name;
    EXPECT_EQ(http.closes, 1) << c.name;
  }
}
