#include "update/update_check.h"

#include <gtest/gtest.h>

#include "tests/support/fake_http_client.h"
#include "tests/support/limited_memory.h"
#include "update/version.h"

TEST(UpdateCheck, FallsBackToItsOwnVersionOnAnythingUnusable) {
  using namespace std::string_literals;
  const struct {
    const char* name;
    std::string body;
    std::size_t brokenAt;
    const wchar_t* latest;
  } kCases[] = {
      {"stalls inside the version", "0.0.2.9", 4, AppVersionDisplay},
      {"stalls after the version", "0.0.2.9 and more", 7, L"0.0.2.9"},
      {"not in the code page", "\x81\xFF 0.0.2.9 \xE9", std::string::npos, L"0.0.2.9"},
      {"ends at the first NUL", "0.0.2.8\0001.1.1.1"s, std::string::npos, L"0.0.2.8"},
      {"nothing before the first NUL", "\0000.0.2.8"s, std::string::npos, AppVersionDisplay},
      // The bytes fit into the memory there is, their text does not.
      {"endless", std::string(700'000, '9'), std::string::npos, AppVersionDisplay},
  };
  for (const auto& c : kCases) {
    FakeHttpClient http;
    http.body = c.body;
    http.brokenAt = c.brokenAt;
    const LimitedMemory limited(1'200'000);
    EXPECT_EQ(AskForLatestVersion(http, true), c.latest) << c.name;
  }
}
