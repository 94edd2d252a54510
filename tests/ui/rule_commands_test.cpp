// The commands that bring rules in and out: import, export and presets.

#include "platform/text_file.h"
#include "storage/rule_presets.h"
#include "tests/support/program_window_fixture.h"

namespace {

constexpr wchar_t kTwoRules[] = L"{ \"rules\": [ { \"processPattern\": \"one.exe\" }, { \"processPattern\": \"two.exe\" } ] }";
constexpr wchar_t kNoValidRule[] = L"{ \"rules\": [ { \"processPattern\": \"\" } ] }";

class RuleExchangeTest : public ProgramWindowTest {
 protected:
  RuleExchangeTest() {
    rules.Append({Rule(rules.TakeRuleId(), L"exported.exe")});
    SetClipboard(L"");
    Open();
  }

  /// Waits for the command's message box, expects the text and closes it.
  void ExpectMessage(const wchar_t* text) {
    HWND box = WaitForDialog(L"Vantora");
    EXPECT_NE(::FindWindowExW(box, nullptr, L"Static", text), nullptr) << text;
    Answer(box, IDOK);
  }
  void RunWithFile(WORD command, const std::wstring& name) {
    PostCommand(Window(), command);
    AnswerFileDialog(WaitForDialogWith(kFileNameBox), folder.File(name));
  }
  /// The command is over: the main window takes input again and shows what has been saved. The window is back shortly before the
  /// command has done its work; a rule too many shows in the next count.
  void ExpectIdleWithRules(int count) {
    EXPECT_EQ(WaitForDialog(kMainWindowTitle), Window());
    EXPECT_TRUE(WaitUntil([&] { return RowCount(list) == count; })) << RowCount(list);
    EXPECT_EQ(Rules().size(), static_cast<std::size_t>(count));
    ExpectSaved();
  }
};

TEST_F(RuleExchangeTest, TheClipboardIsOfferedWhenItLooksLikeRules) {
  // The clipboard and the answer to the offer; 0: none is made.
  const std::pair<std::wstring, WORD> kCases[] = {
      {kTwoRules, IDYES},
      {kTwoRules, IDNO},
      {kTwoRules, IDCANCEL},
      {kNoValidRule, IDYES},
      {L"", 0},
      {L"{ \"rules\": [] }", 0},
      {L"\"processPattern\": \"a\"", 0},
      {L"\"Rules\" \"ProcessPattern\"", 0},
      {std::wstring(L"nothing") + L'\0' + kTwoRules, 0},  // what stands behind the terminator is not text
  };
  for (const auto& [text, answer] : kCases) {
    SCOPED_TRACE(::testing::PrintToString(text) + " answer " + std::to_string(answer));
    SetClipboard(text);
    PostCommand(Window(), IDC_IMPORT_RULES);
    if (answer != 0) {
      HWND offer = WaitForDialog(L"Import Rules");
      SetClipboard(L"taken by another program");  // the clipboard is free while the user thinks
      PostCommand(offer, answer);
    }
    if (text == kNoValidRule) ExpectMessage(L"Failed to import rules. Check the file format.");
    if (answer == 0 || answer == IDNO) Answer(WaitForDialogWith(kFileNameBox), IDCANCEL);
    ExpectIdleWithRules(3);
  }
}

TEST_F(RuleExchangeTest, ExportAsksBeforeOverwritingAndImportAppends) {
  const std::wstring path = folder.File(L"rules out.json");
  ASSERT_EQ(WriteTextFile(path, L"old"), WriteResult::kWritten);
  for (const WORD overwrite : {WORD{IDNO}, WORD{IDYES}}) {
    RunWithFile(IDC_EXPORT_RULES, L"rules out");  // the extension is added
    HWND question = WaitForDialogWith(IDYES);
    ASSERT_NE(question, nullptr) << "no question before overwriting";
    EXPECT_EQ(ReadTextFile(path), L"old");
    PostCommand(question, overwrite);
    if (overwrite == IDNO) Answer(WaitForDialogWith(kFileNameBox), IDCANCEL);
  }
  ExpectMessage(L"Rules exported successfully.");
  for (const int rulesAfter : {2, 3}) {  // twice: a rule that is imported twice is there twice
    RunWithFile(IDM_IMPORT_RULES, L"rules out.json");
    ExpectIdleWithRules(rulesAfter);
    EXPECT_EQ(Cell(list, rulesAfter - 1, 1), L"exported.exe");
  }

  // A file that somebody else has open.
  const UniqueHandle held = OwnFileHandle(::CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(held);
  RunWithFile(IDM_EXPORT_RULES, L"rules out");
  PostCommand(WaitForDialogWith(IDYES), IDYES);
  ExpectMessage(L"Failed to export rules.");
  ExpectIdleWithRules(3);
}

TEST_F(ProgramWindowTest, EveryPresetOfTheRealMenuAddsItsRules) {
  const std::vector<std::wstring> kLabels = {
      L"Browser resource limits (Chrome, Firefox, Edge)", L"Runaway CPU detection (any process > 95%)",
      L"Handle leak detection (any process > 20,000)",    L"Memory hog detection (any process > 4 GB)",
      L"GDI object leak detection (any process > 8,000)", L"Thread bomb detection (any process > 500)"};
  Open();
  RuleStore expected([] { return std::wstring(); });
  for (int position = 0; position < static_cast<int>(kLabels.size()); ++position) {
    AddPresetRules(expected, RulePresets()[static_cast<std::size_t>(position)]);
    // The first time as the button, then as the menu item that stands for it.
    PostCommand(Window(), position == 0 ? IDC_PRESETS : IDM_PRESETS);
    EXPECT_EQ(MenuTexts(WaitForPopup()), kLabels);
    ChooseMenuItem(Window(), position);
    ASSERT_TRUE(WaitUntil([&] { return RowCount(list) == static_cast<int>(expected.Snapshot()->size()); })) << position;
    EXPECT_EQ(Rules(), *expected.Snapshot());
    ExpectSaved();
  }
}

}  // namespace
