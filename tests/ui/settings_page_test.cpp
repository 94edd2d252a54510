#include "ui/main_window/settings_page.h"

#include <filesystem>
#include <tuple>

#include "platform/file.h"
#include "tests/support/program_window_fixture.h"

namespace {

using SettingsPageTest = ProgramWindowTest;

TEST_F(SettingsPageTest, OpensFilledAndEveryChangeEnablesApply) {
  engine.SetIntervalMs(45'999);
  settings.Update([](AppSettings& s) { s = {6 | 0x100, 77, 24, true, L"C:\\alerts.log", L"C:\\ding.wav", {}}; });
  Open();
  EXPECT_TRUE(!Checked(IDC_NOTIFY) && Checked(IDC_LOG) && Checked(IDC_SOUND));
  // The control, its text (null: a check box), the actions once its change is applied.
  constexpr std::tuple<int, const wchar_t*, std::uint32_t> kControls[] = {{IDC_POLL_INTERVAL, L"45", 6},
                                                                          {IDC_THROTTLE, L"77", 6},
                                                                          {IDC_LOG_PATH, L"C:\\alerts.log", 6},
                                                                          {IDC_SOUND_PATH, L"C:\\ding.wav", 6},
                                                                          {IDC_NOTIFY, nullptr, 7},
                                                                          {IDC_LOG, nullptr, 5},
                                                                          {IDC_SOUND, nullptr, 1}};
  for (const auto& [id, text, actions] : kControls) {
    SCOPED_TRACE(id);
    EXPECT_FALSE(ApplyEnabled());
    if (text != nullptr) {
      EXPECT_EQ(Text(id), text);
      Type(id, text);  // the same text is a change, too
    } else {
      Click(id);
    }
    EXPECT_TRUE(ApplyEnabled());
    ::SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(IDC_APPLY)), TRUE);
    Click(IDC_APPLY);
    EXPECT_TRUE(::IsWindowEnabled(FocusOf(Window()))) << "the keyboard goes on";
    EXPECT_EQ(settings.Get().alertActions, actions);
  }
  EXPECT_FALSE(ApplyEnabled());
}

TEST_F(SettingsPageTest, ApplyTakesNumbersWithinTheirLimitsAndPathsAsTyped) {
  Open();
  // What is typed into both fields; then the interval and the throttle in seconds.
  constexpr std::tuple<const wchar_t*, std::uint32_t, std::uint32_t> kRows[] = {
      {L"1", 1, 1},        {L"3600", 3600, 3600}, {L"3601", 3601, 3600},    {L"86400", 86400, 3600},      {L"86401", 86400, 3600},
      {L"0", 86400, 3600}, {L"", 86400, 3600},    {L"twelve", 86400, 3600}, {L"4294967297", 86400, 3600}, {L"-5", 86400, 3600}};
  for (const auto& [text, intervalSec, throttleSec] : kRows) {
    SCOPED_TRACE(testing::PrintToString(text));
    Type(IDC_POLL_INTERVAL, text);
    Type(IDC_THROTTLE, text);
    Click(IDC_APPLY);
    EXPECT_EQ(engine.IntervalMs(), intervalSec * 1000);
    EXPECT_EQ(settings.Get().notificationThrottleSec, throttleSec);
    EXPECT_EQ(Text(IDC_POLL_INTERVAL), text);
    EXPECT_FALSE(ApplyEnabled());
    EXPECT_TRUE(SavedAsInMemory());
  }
  for (const std::wstring& path : {std::wstring(L" no such:file "), std::wstring(), std::wstring(300, L'y')}) {
    Type(IDC_LOG_PATH, path);
    Type(IDC_SOUND_PATH, path + L'z');
    Click(IDC_APPLY);
    EXPECT_EQ(settings.Get().logFilePath, path.substr(0, 259));
    EXPECT_EQ(settings.Get().soundFilePath, (path + L'z').substr(0, 259));
    EXPECT_TRUE(path.empty() || SavedAsInMemory()) << "an empty one is read as the default";
  }
  Type(IDC_POLL_INTERVAL, L"5");
  Click(IDC_NOTIFY);
  Close(IDOK);
  EXPECT_EQ(engine.IntervalMs(), 86'400'000U) << "what is not applied is dropped";
  EXPECT_EQ(settings.Get().alertActions, ACTION_NOTIFY | ACTION_LOG);
}

TEST_F(SettingsPageTest, TheDotsChooseAFileForTheirField) {
  Open();
  const std::wstring sound = folder.File(L"settings test.wav");
  const std::wstring log = folder.File(L"settings test.log");
  for (const std::wstring& path : {sound, log}) ASSERT_EQ(WriteWholeFile(path, "x"), WriteResult::kWritten);
  const std::filesystem::path directory = std::filesystem::current_path();
  std::filesystem::create_directories(L"C:\\windows\\Media");  // which Wine lacks
  const struct {
    int field;
    const wchar_t* typed;
    const wchar_t* shown;  ///< null: systems differ
    std::wstring picked;
    WORD answer;
    std::wstring after;
  } rows[] = {
      {IDC_LOG_PATH, L"C:\\windows\\old.log", L"old.log", log, IDOK, log},  // exists: no question
      {IDC_LOG_PATH, L"", L"", L"C:\\windows\\new", IDOK, L"C:\\windows\\new.log"},
      {IDC_LOG_PATH, L"a|b?c", nullptr, L"", IDCANCEL, L"a|b?c"},
      {IDC_SOUND_PATH, L"C:\\windows\\ding.wav", L"ding.wav", sound, IDOK, sound},
      {IDC_SOUND_PATH, L"", L"", sound, IDOK, sound},
      {IDC_SOUND_PATH, L"C:\\ding.wav", L"ding.wav", sound, IDCANCEL, L"C:\\ding.wav"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.typed) + testing::PrintToString(row.picked));
    Type(row.field, row.typed);
    Click(IDC_APPLY);
    PostCommand(Window(), row.field == IDC_LOG_PATH ? IDC_LOG_BROWSE : IDC_SOUND_BROWSE);
    HWND chooser = WaitForDialogWith(kFileNameBox);
    ASSERT_EQ(::GetWindow(chooser, GW_OWNER), Window());
    EXPECT_TRUE(row.shown == nullptr || WaitUntil([&] { return TextOfItem(chooser, kFileNameBox) == row.shown; }))
        << testing::PrintToString(TextOfItem(chooser, kFileNameBox));
    EXPECT_EQ(TextOfItem(chooser, kFileTypeBox), row.field == IDC_LOG_PATH ? L"Alert log (*.log)" : L"Sounds (*.wav)");
    const bool startsByItself = row.field == IDC_SOUND_PATH && *row.typed == L'\0';
    EXPECT_TRUE(!startsByItself || TextOfItem(chooser, kFolderBox) == L"Media");
    ::SetDlgItemTextW(chooser, kFileNameBox, row.picked.c_str());
    Answer(chooser, row.answer);
    EXPECT_TRUE(WaitUntil([&] { return Text(row.field) == row.after; })) << testing::PrintToString(Text(row.field));
    EXPECT_EQ(ApplyEnabled(), row.answer == IDOK);
  }
  EXPECT_EQ(std::filesystem::current_path(), directory);
}

}  // namespace
