// What the program leaves in the profile, byte for byte, and what it takes from there, the earlier product's included.

#include "tests/e2e/fixture.h"

namespace e2e {
namespace {

using Stored = EndToEndTest;

std::string Header() { return std::string(kMark) + kRulesHeader + "\r\n"; }

/// Starts the program without its main window and ends it in order.
bool RunOnce() {
  const RunningProgram program(L"/tray");
  return program.End();
}

TEST_F(Stored, TheRulesFileIsReadWithItsFaultsAndRewrittenByteForByteAtTheEnd) {
  WriteFileBytes(
      profile_.RulesFile(),
      "anything at all\n4,foo.exe,1\nnot a rule\n9, b*.exe,-1,10,0.5,512,95.04,7,8,9,7,0\n5,,1\n\n5,c d.exe,0\n6,e.exe,yes\n");
  ASSERT_TRUE(RunOnce());
  EXPECT_EQ(ReadFileBytes(profile_.RulesFile()),
            Header() +
                "4,foo.exe,1,0,0.0,0.0,0.0,0,0,0,3,60\r\n9, b*.exe,1,10,0.5,512.0,95.0,7,8,9,7,0\r\n"
                "5,c d.exe,0,0,0.0,0.0,0.0,0,0,0,3,60\r\n");
}

TEST_F(Stored, SettingsSurviveARunAndFaultyOnesGiveWayToTheirDefaults) {
  const struct {
    const wchar_t* name;
    RegistryValue found;
    std::optional<RegistryValue> left;
  } rows[] = {
      {L"PollIntervalSec", RegistryValue::Number(86'401), RegistryValue::Number(5)},
      {L"PollIntervalMs", RegistryValue::Number(5'500), std::nullopt},
      {L"NotificationThrottleSec", RegistryValue::Number(3'600), RegistryValue::Number(3'600)},
      {L"LogFilePath", RegistryValue::Text(L"C:\\logs\\\x00E9.log"), RegistryValue::Text(L"C:\\logs\\\x00E9.log")},
      {L"SoundFilePath", RegistryValue::Text(std::wstring(260, L'x')), RegistryValue::Text(L"")},
      {L"Exclusions", RegistryValue::Text(std::wstring(L"a*\0b.exe\0", 9), REG_MULTI_SZ),
       RegistryValue::Text(std::wstring(L"a*\0b.exe\0", 9), REG_MULTI_SZ)},
      {L"Foreign", RegistryValue::Text(L"kept"), RegistryValue::Text(L"kept")},
  };
  for (const auto& row : rows) profile_.Set(kSettings, row.name, row.found);
  ASSERT_TRUE(RunOnce());
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(row.name)));
    EXPECT_EQ(profile_.Get(kSettings, row.name), row.left);
  }
}

TEST_F(Stored, TheEarlierProductsSettingsFolderAndAutostartAreTakenOver) {
  profile_.DeleteKey(kSettings);
  profile_.Set(kLegacySettings, L"NotificationThrottleSec", RegistryValue::Number(77));
  profile_.Set(kLegacySettings, L"UpdateChecksDisabled", RegistryValue::Number(1));
  profile_.Set(kRun, L"Halvern", RegistryValue::Text(L"old.exe"));
  WriteFileBytes(profile_.LegacyFolder() + L"\\rules.csv", Header() + "3,old.exe,1,0,0.0,0.0,0.0,5,0,0,3,60\r\n");
  ASSERT_TRUE(RunOnce());
  EXPECT_EQ(profile_.Get(kSettings, L"NotificationThrottleSec"), RegistryValue::Number(77));
  EXPECT_EQ(profile_.Get(kLegacySettings, L"NotificationThrottleSec"), RegistryValue::Number(77));
  EXPECT_EQ(ReadFileBytes(profile_.RulesFile()), Header() + "3,old.exe,1,0,0.0,0.0,0.0,5,0,0,3,60\r\n");
  EXPECT_FALSE(PathExists(profile_.LegacyFolder()));
  EXPECT_EQ(profile_.Get(kRun, L"Halvern"), std::nullopt);
  EXPECT_EQ(profile_.Get(kRun, L"Vantora"), RegistryValue::Text(L"\"" + ProgramPath() + L"\""));
}

}  // namespace
}  // namespace e2e
