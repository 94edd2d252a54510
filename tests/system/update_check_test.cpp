#include "system/update_check.h"

#include <gtest/gtest.h>

#include "fake_http_client.h"
#include "limited_memory.h"
#include "system/version_number.h"

TEST(UpdateCheck, FallsBackToItsOwnVersionOnAnythingUnusable) {
  struct Case {
    const char* name;
    void (*setUp)(FakeHttpClient&);
    const wchar_t* latest;
  };
  const Case kCases[] = {
      {"stalls inside the version", [](FakeHttpClient& http) { http.brokenAt = 4; }, AppVersionDisplay},
      {"stalls after the version", [](FakeHttpClient& http) { http.brokenAt = 7; }, L"0.0.2.9"},
      {"not in the code page", [](FakeHttpClient& http) { http.body = "\x81\xFF 0.0.2.9 \xE9"; }, L"0.0.2.9"},
      // The bytes fit into the memory there is, their text does not.
      {"endless", [](FakeHttpClient& http) { http.body.assign(700'000, '9'); }, AppVersionDisplay},
  };
  for (const Case& c : kCases) {
    FakeHttpClient http;
    http.body = "0.0.2.9 and more";
    c.setUp(http);
    const LimitedMemory limited(1'200'000);
    EXPECT_EQ(AskForLatestVersion(http, true), c.latest) << c.name;
  }
}
