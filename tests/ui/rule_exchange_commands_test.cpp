#include "ui/rule_exchange_commands.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>

#include "platform/handles.h"
#include "platform/text_file.h"
#include "res/resource.h"
#include "test_program.h"
#include "ui/windows_of_program.h"
#include "window_driver.h"

namespace {

constexpr wchar_t kProduct[] = L"Vantora";
constexpr wchar_t kOfferTitle[] = L"Import Rules";
constexpr wchar_t kTwoRules[] = L"{ \"rules\": [ { \"processPattern\": \"one.exe\" }, { \"processPattern\": \"two.exe\" } ] }";
constexpr wchar_t kNoValidRule[] = L"{ \"rules\": [ { \"processPattern\": \"\" } ] }";
constexpr wchar_t kImportFailed[] = L"Failed to import rules. Check the file format.";

/// `units` of the text go to the clipboard, with a terminator only when they hold one; none leave it empty.
void SetClipboard(const std::wstring& text) {
  const ClipboardLock clipboard(nullptr);
  ASSERT_TRUE(clipboard.IsOpen());
  ::EmptyClipboard();
  if (text.empty()) return;
  const std::size_t bytes = text.size() * sizeof(wchar_t);
  HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
  std::memcpy(::GlobalLock(memory), text.data(), bytes);
  ::GlobalUnlock(memory);
  ASSERT_NE(::SetClipboardData(CF_UNICODETEXT, memory), nullptr);
}

class RuleExchangeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    test_.rules.Append({MakeNewRule(test_.rules.TakeRuleId())});
    dialog_ = thread_.WaitForDialog(kMainWindowTitle);
    list_ = ::GetDlgItem(dialog_, IDC_RULE_LIST);
    ASSERT_NE(list_, nullptr);
  }
  void TearDown() override { SetClipboard(L""); }

  /// Waits for the command's message box, expects the text and closes it.
  void ExpectMessage(const wchar_t* text) {
    HWND box = thread_.WaitForDialog(kProduct);
    ASSERT_NE(box, nullptr) << text;
    bool found = false;
    for (HWND child = nullptr; (child = ::FindWindowExW(box, child, L"Static", nullptr)) != nullptr;) {
      found = found || TextOf(child) == text;
    }
    EXPECT_TRUE(found) << text;
    PostCommand(box, IDOK);
  }

  /// The command is over: the main window takes input again and shows what has been saved. The window is back shortly before the
  /// command has done its work; a rule too many shows in the next count.
  void ExpectIdleWithRules(int count) {
    ASSERT_EQ(thread_.WaitForDialog(kMainWindowTitle), dialog_);
    EXPECT_TRUE(WaitUntil([&] { return RowCount(list_) == count; })) << RowCount(list_);
    EXPECT_EQ(test_.rules.Snapshot()->size(), static_cast<std::size_t>(count));
    RuleStore saved([] { return std::wstring(); });
    ASSERT_TRUE(saved.Load(test_.folder.File(L"rules.csv")));
    EXPECT_EQ(saved.Snapshot()->size(), static_cast<std::size_t>(count));
  }

  TestProgram test_;
  WindowThread thread_{[this] { MainDialogThread(test_.program); }};
  HWND dialog_ = nullptr;
  HWND list_ = nullptr;
};

TEST_F(RuleExchangeTest, TheClipboardIsOfferedWhenItLooksLikeRules) {
  enum class Then { kDone, kFileDialog, kFailure };
  const struct {
    std::wstring text;
    int answer;  // 0: no offer is expected
    Then then;
    int added;
  } kCases[] = {
      {kTwoRules, IDYES, Then::kDone, 2},
      {kTwoRules, IDNO, Then::kFileDialog, 0},
      {kTwoRules, IDCANCEL, Then::kDone, 0},
      {kNoValidRule, IDYES, Then::kFailure, 0},
      {L"", 0, Then::kFileDialog, 0},
      {L"{ \"rules\": [] }", 0, Then::kFileDialog, 0},
      {L"\"processPattern\": \"a\"", 0, Then::kFileDialog, 0},
      {L"\"Rules\" \"ProcessPattern\"", 0, Then::kFileDialog, 0},
      // What stands behind the terminator is not text.
      {std::wstring(L"nothing") + L'\0' + kTwoRules, 0, Then::kFileDialog, 0},
  };
  int expected = 1;
  for (const auto& test : kCases) {
    SCOPED_TRACE(::testing::PrintToString(test.text) + " answer " + std::to_string(test.answer));
    SetClipboard(test.text);
    PostCommand(dialog_, IDC_IMPORT_RULES);
    if (test.answer != 0) {
      HWND offer = thread_.WaitForDialog(kOfferTitle);
      ASSERT_NE(offer, nullptr);
      SetClipboard(L"taken by another program");  // the clipboard is free while the user thinks
      PostCommand(offer, test.answer);
    }
    if (test.then == Then::kFailure) ExpectMessage(kImportFailed);
    if (test.then == Then::kFileDialog) {
      HWND fileDialog = thread_.WaitForDialogWith(kFileNameBox);
      ASSERT_NE(fileDialog, nullptr);
      PostCommand(fileDialog, IDCANCEL);
    }
    expected += test.added;
    ExpectIdleWithRules(expected);
  }
}

TEST_F(RuleExchangeTest, ExportAsksBeforeOverwritingAndImportAppends) {
  const std::wstring typed = test_.folder.File(L"rules out");
  ASSERT_EQ(WriteTextFile(typed + L".json", L"old"), WriteResult::kWritten);
  for (const int overwrite : {IDNO, IDYES}) {
    PostCommand(dialog_, IDC_EXPORT_RULES);
    AnswerFileDialog(thread_.WaitForDialogWith(kFileNameBox), typed);
    HWND question = thread_.WaitForDialogWith(IDYES);
    ASSERT_NE(question, nullptr) << "no question before overwriting";
    EXPECT_EQ(ReadTextFile(typed + L".json"), L"old");
    PostCommand(question, overwrite);
    if (overwrite == IDNO) {
      PostCommand(thread_.WaitForDialogWith(kFileNameBox), IDCANCEL);
    } else {
      ExpectMessage(L"Rules exported successfully.");
    }
    ExpectIdleWithRules(1);
  }
  EXPECT_NE(ReadTextFile(typed + L".json").value_or(L"").find(L"\"maxUSERObjects\": 0"), std::wstring::npos);

  test_.rules.Edit(1, [](ThresholdRule& rule) { rule.processPattern = L"exported.exe"; });
  PostCommand(dialog_, IDC_EXPORT_RULES);
  AnswerFileDialog(thread_.WaitForDialogWith(kFileNameBox), test_.folder.File(L"second.json"));
  ExpectMessage(L"Rules exported successfully.");
  for (const int rulesAfter : {2, 3}) {  // twice: a rule that is imported twice is there twice
    PostCommand(dialog_, IDM_IMPORT_RULES);
    AnswerFileDialog(thread_.WaitForDialogWith(kFileNameBox), test_.folder.File(L"second.json"));
    ASSERT_TRUE(WaitUntil([&] { return RowCount(list_) == rulesAfter; }));
    ExpectIdleWithRules(rulesAfter);
    EXPECT_EQ(Cell(list_, rulesAfter - 1, 1), L"exported.exe");
  }
}

TEST_F(RuleExchangeTest, AFailedExportIsSaidAndChangesNothing) {
  const std::wstring blocked = test_.folder.File(L"blocked.json");
  const UniqueHandle held =
      OwnFileHandle(::CreateFileW(blocked.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  ASSERT_TRUE(held);
  PostCommand(dialog_, IDC_EXPORT_RULES);
  AnswerFileDialog(thread_.WaitForDialogWith(kFileNameBox), blocked);
  if (HWND question = thread_.WaitForDialogWith(IDYES)) PostCommand(question, IDYES);
  ExpectMessage(L"Failed to export rules.");
  ExpectIdleWithRules(1);
}

}  // namespace
