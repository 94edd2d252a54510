#include "platform/text_format.h"

#include <gtest/gtest.h>

namespace {

TEST(FormatText, MeansTheSameOnEveryRuntime) {
  EXPECT_EQ(FormatText(L"ALERT: PID %u (%ls) Rule %u: %ls", 4294967295u, L"\u00e4 b.exe", 7u, L"x"),
            L"ALERT: PID 4294967295 (\u00e4 b.exe) Rule 7: x");
  EXPECT_EQ(FormatText(L"%llu MB > %llu MB", 17592186044415ull, 0ull), L"17592186044415 MB > 0 MB");
  EXPECT_EQ(FormatText(L"%.1f%% %.2f", 95.04, 0.125), L"95.0% 0.12");
  EXPECT_EQ(FormatText(L"%04u-%02u|%5d|%-4d|%08X", 2024u, 3u, -12, 7, 0xBEEFu), L"2024-03|  -12|7   |0000BEEF");
  EXPECT_EQ(FormatText(L""), L"");
}

TEST(FormatText, GrowsWithTheText) {
  for (const std::size_t length : {126u, 127u, 128u, 129u, 511u, 512u, 513u, 70'000u}) {
    const std::wstring argument(length, L'\u00e4');
    EXPECT_EQ(FormatText(L"%ls%u", argument.c_str(), 42u), argument + L"42") << length;
  }
}

}  // namespace
