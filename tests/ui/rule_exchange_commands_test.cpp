#include "ui/rule_exchange_commands.h"

#include "platform/text_file.h"
#include "tests/ui/program_window_fixture.h"

namespace {

constexpr wchar_t kTwoRules[] = L"{ \"rules\": [ { \"processPattern\": \"one.exe\" }, { \"processPattern\": \"two.exe\" } ] }";
constexpr wchar_t kNoValidRule[] = L"{ \"rules\": [ { \"processPattern\": \"\" } ] }";

class RuleExchangeTest : public ProgramWindowTest {
 protected:
  void SetUp() override {
    ProgramWindowTest::SetUp();
    ThresholdRule rule = MakeNewRule(rules.TakeRuleId());
    rule.processPattern = L"exported.exe";
    rules.Append({rule});
    Open();
  }
  void TearDown() override {
    SetClipboard(L"");
    ProgramWindowTest::TearDown();
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
  enum class Then { kDone, kFileDialog, kFailure };
  const struct {
    std::wstring text;
    WORD answer;  // 0: no offer is expected
    Then then;
  } kCases[] = {
      {kTwoRules, IDYES, Then::kDone},
      {kTwoRules, IDNO, Then::kFileDialog},
      {kTwoRules, IDCANCEL, Then::kDone},
      {kNoValidRule, IDYES, Then::kFailure},
      {L"", 0, Then::kFileDialog},
      {L"{ \"rules\": [] }", 0, Then::kFileDialog},
      {L"\"processPattern\": \"a\"", 0, Then::kFileDialog},
      {L"\"Rules\" \"ProcessPattern\"", 0, Then::kFileDialog},
      // What stands behind the terminator is not text.
      {std::wstring(L"nothing") + L'\0' + kTwoRules, 0, Then::kFileDialog},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(::testing::PrintToString(test.text) + " answer " + std::to_string(test.answer));
    SetClipboard(test.text);
    PostCommand(Window(), IDC_IMPORT_RULES);
    if (test.answer != 0) {
      HWND offer = WaitForDialog(L"Import Rules");
      SetClipboard(L"taken by another program");  // the clipboard is free while the user thinks
      PostCommand(offer, test.answer);
    }
    if (test.then == Then::kFailure) ExpectMessage(L"Failed to import rules. Check the file format.");
    if (test.then == Then::kFileDialog) Answer(WaitForDialogWith(kFileNameBox), IDCANCEL);
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

}  // namespace
