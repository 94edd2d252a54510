#include "platform/text_format.h"

#include <gtest/gtest.h>

TEST(FormatText, MeansTheSameOnEveryRuntimeAndGrowsWithTheText) {
  EXPECT_EQ(FormatText(L"PID %u (%ls): %llu MB", 4294967295u, L"\u00e4 b.exe", 17592186044415ull),
            L"PID 4294967295 (\u00e4 b.exe): 17592186044415 MB");
  EXPECT_EQ(FormatText(L"%.1f%% %04u|%5d|%-4d|%08X", 95.04, 3u, -12, 7, 0xBEEFu), L"95.0% 0003|  -12|7   |0000BEEF");
  for (const std::size_t length : {0u, 126u, 127u, 128u, 511u, 512u, 513u, 70'000u}) {
    const std::wstring argument(length, L'\u00e4');
    EXPECT_EQ(FormatText(L"%ls%u", argument.c_str(), 42u), argument + L"42") << length;
  }
}
