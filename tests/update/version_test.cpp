#include "update/version.h"

#include <gtest/gtest.h>

TEST(VersionNumber, ReadsFourComponentsOfEightBits) {
  const struct {
    const wchar_t* text;
    std::uint32_t number;
  } kCases[] = {
      {nullptr, 0},
      {L"", 0},
      {L"1.2.3", 0},   // too short
      {L"1.2.34", 0},  // still too short
      {L"1.2.345", (1U << 24) + (2U << 16) + (345U << 8)},
      {L"0.0.0.0", 0},
      {L"0.0.2.7", 519},
      {L"0.0.2.7 BETA", 519},
      {L"v0.0.2.7", 0},  // nothing fits the format
      {L"0.0.2,7..", 2U << 8},
      {L"1.2.3.4.5", 0x01020304},
      {L"0.0.2.300", 0x32C},  // spills into the third
      {L"0.0.3.44", 0x32C},
      {L"255.255.255.255", 0xFFFFFFFF},
      {L"256.0.0.0", 0},  // the top component spills out
      {L"0.0.0.4294967295", 0xFFFFFFFF},
      {L"0.0.0.4294967296", 0xFFFFFFFF},  // does not wrap round to 0
      {L"0.0.0.99999999999999999999999999", 0xFFFFFFFF},
  };
  for (const auto& [text, number] : kCases) EXPECT_EQ(VersionToNumber(text), number) << testing::PrintToString(text);
}

TEST(VersionAnswer, OffersAnUpdateExactlyWhenItNamesANewerVersion) {
  const struct {
    std::wstring answer;
    std::wstring latest;
    bool newer;
  } kCases[] = {
      {L"0.0.2.7", L"0.0.2.7", false},
      {L"0.0.2.8\n", L"0.0.2.8", true},
      {L"0.0.2.6", L"0.0.2.6", false},
      {L"Version: 0.0.2.9 (beta)", L"0.0.2.9", true},
      {L"9 of 0.0.2.8", L"90.0.2.8", true},  // a digit in the words around it joins the number
      {L"1.2.3", AppVersionDisplay, false},
      {L"0.0.0.0", AppVersionDisplay, false},
      {L"<html>not found</html>", AppVersionDisplay, false},
      {L"", AppVersionDisplay, false},
      {L"255.255.255.255", L"255.255.255.255", true},
      {std::wstring(100'000, L'9') + L".0.0.1", std::wstring(100'000, L'9') + L".0.0.1", true},
  };
  for (const auto& [answer, latest, newer] : kCases) {
    EXPECT_EQ(LatestVersionFromAnswer(answer), latest);
    EXPECT_EQ(IsNewerVersion(LatestVersionFromAnswer(answer)), newer) << testing::PrintToString(answer.substr(0, 60));
  }
}
