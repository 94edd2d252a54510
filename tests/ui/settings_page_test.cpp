#include "ui/settings_page.h"

#include "tests/ui/settings_fixture.h"

namespace {

class SettingsPageTest : public SettingsFixture {
 protected:
  void SetUp() override {
    SettingsFixture::SetUp();
    engine.SetIntervalMs(45'999);
    settings.Update([](AppSettings& s) {
      s.alertActions = ACTION_LOG | ACTION_SOUND | 0x100;
      s.notificationThrottleSec = 77;
      s.logFilePath = L"C:\\logs\\alerts.log";
      s.soundFilePath = L"C:\\sounds\\ding.wav";
    });
    OpenWindow();
  }
};

TEST_F(SettingsPageTest, OpensFilledAndEveryChangeEnablesApply) {
  EXPECT_EQ(Text(IDC_POLL_INTERVAL), L"45");
  EXPECT_EQ(Text(IDC_THROTTLE), L"77");
  EXPECT_EQ(Text(IDC_LOG_PATH), L"C:\\logs\\alerts.log");
  EXPECT_EQ(Text(IDC_SOUND_PATH), L"C:\\sounds\\ding.wav");
  EXPECT_FALSE(Checked(IDC_NOTIFY));
  EXPECT_TRUE(Checked(IDC_LOG));
  EXPECT_TRUE(Checked(IDC_SOUND));
  EXPECT_FALSE(ApplyEnabled());
  for (const int id : {IDC_POLL_INTERVAL, IDC_THROTTLE, IDC_LOG_PATH, IDC_SOUND_PATH, IDC_NOTIFY, IDC_LOG, IDC_SOUND}) {
    id == IDC_NOTIFY || id == IDC_LOG || id == IDC_SOUND ? Click(id) : Type(id, Text(id));  // the same text is a change, too
    EXPECT_TRUE(ApplyEnabled()) << id;
    Click(IDC_APPLY);
    EXPECT_FALSE(ApplyEnabled()) << id;
  }
}

TEST_F(SettingsPageTest, ApplyTakesNumbersWithinTheirLimitsOnly) {
  struct Row {
    const wchar_t* text;
    std::uint32_t intervalMs;   ///< typed as the poll interval
    std::uint32_t throttleSec;  ///< typed as the throttle
  };
  constexpr std::uint32_t kSame = 0;
  constexpr Row kRows[] = {
      {L"1", 1'000, 1},
      {L"3600", 3'600'000, 3'600},
      {L"3601", 3'601'000, kSame},
      {L"86400", 86'400'000, kSame},
      {L"86401", kSame, kSame},
      {L"0", kSame, kSame},
      {L"", kSame, kSame},
      {L"twelve", kSame, kSame},
      {L"4294967297", kSame, kSame},
      {L"-5", kSame, kSame},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.text);
    const std::uint32_t intervalBefore = engine.IntervalMs();
    const std::uint32_t throttleBefore = settings.Get().notificationThrottleSec;
    Type(IDC_POLL_INTERVAL, row.text);
    Type(IDC_THROTTLE, row.text);
    Click(IDC_APPLY);
    EXPECT_EQ(engine.IntervalMs(), row.intervalMs != kSame ? row.intervalMs : intervalBefore);
    EXPECT_EQ(settings.Get().notificationThrottleSec, row.throttleSec != kSame ? row.throttleSec : throttleBefore);
    EXPECT_EQ(Text(IDC_POLL_INTERVAL), row.text);
    EXPECT_FALSE(ApplyEnabled());
    EXPECT_TRUE(SavedAsInMemory());
  }
}

TEST_F(SettingsPageTest, ApplyBuildsTheActionsFromTheBoxesAndKeepsPathsAsTyped) {
  constexpr std::pair<int, std::uint32_t> kBoxes[] = {
      {IDC_NOTIFY, ACTION_NOTIFY}, {IDC_LOG, ACTION_LOG}, {IDC_SOUND, ACTION_SOUND}};
  for (std::uint32_t actions = 0; actions < 8; ++actions) {
    for (const auto& [box, action] : kBoxes) {
      if (Checked(box) != ((actions & action) != 0)) Click(box);
    }
    Click(IDC_APPLY);
    EXPECT_EQ(settings.Get().alertActions, actions);
  }
  for (const std::wstring& path :
       {std::wstring(L" no such:file "), std::wstring(), std::wstring(259, L'x'), std::wstring(300, L'y')}) {
    Type(IDC_LOG_PATH, path);
    Type(IDC_SOUND_PATH, path);
    Click(IDC_APPLY);
    EXPECT_EQ(settings.Get().logFilePath, path.substr(0, 259));
    EXPECT_EQ(settings.Get().soundFilePath, path.substr(0, 259));
    EXPECT_TRUE(SavedAsInMemory());
  }
}

TEST_F(SettingsPageTest, WhatIsNotAppliedIsDropped) {
  const AppSettings before = settings.Get();
  Type(IDC_POLL_INTERVAL, L"5");
  Click(IDC_NOTIFY);
  Command(IDOK);
  CloseWindow();
  EXPECT_EQ(engine.IntervalMs(), 45'999U);
  EXPECT_EQ(settings.Get().alertActions, before.alertActions);
}

/// A chooser that opens with the field's file, and what the field holds after it was left by `answer`.
struct Choice {
  int button;
  int field;
  const wchar_t* typed;
  const wchar_t* shown;  ///< null: systems differ
  const wchar_t* picked;
  int answer;
  const wchar_t* after;
};

HWND NameField(HWND chooser) {
  for (const int id : {0x480, 0x47c}) {
    if (const HWND field = ::GetDlgItem(chooser, id)) return field;
  }
  return nullptr;
}

TEST_F(SettingsPageTest, TheDotsChooseAFileForTheirField) {
  const std::wstring sound = folder.File(L"settings test.wav");
  const std::wstring log = folder.File(L"settings test.log");
  for (const std::wstring& path : {sound, log})
    ::CloseHandle(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
  wchar_t directory[MAX_PATH];
  ::GetCurrentDirectoryW(MAX_PATH, directory);
  const Choice rows[] = {
      {IDC_LOG_BROWSE, IDC_LOG_PATH, L"C:\\windows\\old.log", L"old.log", log.c_str(), IDOK, log.c_str()},  // exists: no question
      {IDC_LOG_BROWSE, IDC_LOG_PATH, L"", L"", L"C:\\windows\\new", IDOK, L"C:\\windows\\new.log"},
      {IDC_LOG_BROWSE, IDC_LOG_PATH, L"a|b?c", nullptr, L"", IDCANCEL, L"a|b?c"},
      {IDC_SOUND_BROWSE, IDC_SOUND_PATH, L"C:\\windows\\ding.wav", L"ding.wav", sound.c_str(), IDOK, sound.c_str()},
      {IDC_SOUND_BROWSE, IDC_SOUND_PATH, L"C:\\ding.wav", L"ding.wav", sound.c_str(), IDCANCEL, L"C:\\ding.wav"},
  };
  for (const Choice& row : rows) {
    SCOPED_TRACE(testing::Message() << row.typed << " " << row.picked);
    Type(row.field, row.typed);
    Click(IDC_APPLY);
    ::PostMessageW(Item(row.button), BM_CLICK, 0, 0);
    HWND chooser = nullptr;
    ASSERT_TRUE(WaitUntil([&] {
      for (const HWND dialog : DialogsWith(-1)) {
        if (::GetWindow(dialog, GW_OWNER) == window && NameField(dialog) != nullptr) chooser = dialog;
      }
      return chooser != nullptr;
    }));
    const auto shown = [&] { return TextOf(NameField(chooser)); };
    EXPECT_TRUE(row.shown == nullptr || WaitUntil([&] { return shown() == row.shown; })) << testing::PrintToString(shown());
    ::SendMessageW(NameField(chooser), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(row.picked));
    Answer(chooser, row.answer);
    EXPECT_TRUE(WaitUntil([&] { return Text(row.field) == row.after; })) << testing::PrintToString(Text(row.field));
    EXPECT_EQ(ApplyEnabled(), row.answer == IDOK);
  }
  wchar_t directoryAfter[MAX_PATH];
  ::GetCurrentDirectoryW(MAX_PATH, directoryAfter);
  EXPECT_STREQ(directoryAfter, directory);
}

}  // namespace
