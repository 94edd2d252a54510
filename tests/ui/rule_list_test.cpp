// The rule list of the main window: its keys, the box over a cell and the rule editor. Keys are
// posted to the control that has the keyboard: the same dialog loop takes them as real ones.

#include <gtest/gtest.h>

#include <functional>

#include "platform/handles.h"
#include "tests/support/main_window_fixture.h"
#include "ui/rules/rule_list_model.h"

namespace {

std::wstring ClipboardText() {
  const ClipboardLock clipboard(nullptr);
  HANDLE data = clipboard.IsOpen() ? ::GetClipboardData(CF_UNICODETEXT) : nullptr;
  const auto* text = data != nullptr ? static_cast<const wchar_t*>(::GlobalLock(data)) : nullptr;
  std::wstring copy = text != nullptr ? text : L"";
  if (text != nullptr) ::GlobalUnlock(data);
  return copy;
}

class RuleListTest : public MainWindowTest {
 protected:
  /// Runs it on the window's own thread, between two of its messages.
  void RunInWindow(const std::function<void()>& routine) {
    static WNDPROC listProcedure;
    const auto procedure = +[](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
      if (message != WM_APP) return ::CallWindowProcW(listProcedure, window, message, wParam, lParam);
      (*reinterpret_cast<const std::function<void()>*>(lParam))();
      return 0;
    };
    const LONG_PTR own = ::GetWindowLongPtrW(list, GWLP_WNDPROC);
    listProcedure = reinterpret_cast<WNDPROC>(own);
    ::SetWindowLongPtrW(list, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    ::SendMessageW(list, WM_APP, 0, reinterpret_cast<LPARAM>(&routine));
    ::SetWindowLongPtrW(list, GWLP_WNDPROC, own);
  }
  void HoldCtrl(bool down) {
    RunInWindow([down] {
      BYTE keys[256] = {};
      keys[VK_CONTROL] = down ? 0x80 : 0;
      ::SetKeyboardState(keys);
    });
  }
  static void Press(HWND control, WPARAM key) { ::PostMessageW(control, WM_KEYDOWN, key, 0); }

  /// Types over what is in the open box and ends it with the key.
  void EndBox(const std::wstring& text, WPARAM key = VK_RETURN) {
    ASSERT_NE(Box(), nullptr);
    ::SetWindowTextW(Box(), text.c_str());
    Press(Box(), key);
    ASSERT_TRUE(WaitForNoBox());
  }
};

TEST_F(RuleListTest, EveryShortcutOpensItsDialogButNotFromAnEditBox) {
  rules.Append({Rule(3, L"a.exe")});
  Open();
  const struct {
    WPARAM key;
    bool ctrl;
    int shows;            ///< a control that only its dialog has
    const wchar_t* says;  ///< the editor's pattern or the chooser's title
  } cases[] = {{VK_INSERT, false, IDC_PATTERN, L""},
               {VK_RETURN, false, IDC_PATTERN, L"a.exe"},
               {'I', true, kFileNameBox, L"Open"},
               {'E', true, kFileNameBox, L"Save As"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key);
    SelectRows(list, {0});
    HoldCtrl(c.ctrl);
    Press(list, c.key);
    HWND dialog = WaitForDialogWith(c.shows);
    ASSERT_NE(dialog, nullptr);
    HoldCtrl(false);
    EXPECT_EQ(c.ctrl ? TextOf(dialog) : TextOfItem(dialog, IDC_PATTERN), c.says);
    EXPECT_EQ(TextOfItem(dialog, kFileTypeBox), c.ctrl ? L"JSON Files (*.json)" : L"");
    Answer(dialog, IDCANCEL);
  }
  HWND edit = Item(IDC_LOG_PATH);
  ::SetWindowTextW(edit, L"");
  Press(edit, VK_INSERT);
  // What the first key posted would have been handled before the second letter.
  for (const wchar_t* typed : {L"x", L"xx"}) {
    ::PostMessageW(edit, WM_CHAR, L'x', 0);
    EXPECT_TRUE(WaitUntil([&] { return TextOf(edit) == typed; }));
  }
  EXPECT_EQ(::FindWindowW(nullptr, kEditorTitle), nullptr);
}

TEST_F(RuleListTest, DelAsksInABoxWhoseTextCanBeCopiedAndEnterWithoutSelectionIsOk) {
  rules.Append({Rule(3, L"a.exe")});
  Open();
  SelectRows(list, {0});
  Press(list, VK_DELETE);
  HWND box = WaitForDialog(L"Confirm Remove");
  for (HWND window : {box, Window()}) ::SendMessageW(window, WM_INITDIALOG, 0, 0);  // from a stranger
  const DWORD before = ::GetClipboardSequenceNumber();
  Press(FocusOf(box), VK_INSERT);  // the main window's key, not the box's
  HoldCtrl(true);
  Press(FocusOf(box), 'C');
  const std::wstring line = L"---------------------------\r\n";
  const std::wstring whole =
      line + L"Confirm Remove\r\n" + line + L"Remove the selected rule?\r\n" + line + L"Yes   No   \r\n" + line;
  // Nobody looks into the clipboard before: the box could not open it then.
  EXPECT_TRUE(WaitUntil([before] { return ::GetClipboardSequenceNumber() != before; }));
  EXPECT_TRUE(WaitUntil([&] { return ClipboardText() == whole; }));
  HoldCtrl(false);
  EXPECT_EQ(::FindWindowW(nullptr, kEditorTitle), nullptr);
  Answer(box, IDYES);
  EXPECT_TRUE(Rules().empty() && RowCount(list) == 0);
  Press(list, VK_RETURN);
  EXPECT_TRUE(WaitUntil([this] { return Window() == nullptr; }));
}

TEST_F(RuleListTest, EnterStoresTheCellOfEveryColumnAndEscapeDoesNot) {
  rules.Append({Rule(3, L"a.exe"), Rule(5, L"b.exe")});
  Open();
  const struct {
    int column;
    const wchar_t* typed;
    const wchar_t* cell;
    WPARAM key = VK_RETURN;
  } cases[] = {{1, L"", L""},         {2, L"abc", L"-"},         {2, L"12abc", L"12"},
               {3, L"2048", L"2048"}, {4, L"1", L"1"},           {5, L"-5", L"-"},
               {5, L"12.5", L"12"},   {6, L" 7", L"7"},          {7, L"99999999999", L"4294967295"},
               {8, L"9", L"9"},       {8, L"3", L"9", VK_ESCAPE}};
  for (const auto& c : cases) {
    NotifyDoubleClick(list, 1, c.column);
    EndBox(c.typed, c.key);
    EXPECT_EQ(Cell(list, 1, c.column), c.cell) << c.column;
    EXPECT_EQ(RuleCellText(c.column, Rules()[1]), c.cell) << c.column;
  }
  NotifyDoubleClick(list, 1, 0);
  EXPECT_FALSE(Rules()[1].enabled);
  EXPECT_EQ(Rules()[1].maxCpuPercent, 12.5);
  EXPECT_EQ(Rules()[1].maxWorkingSet, 2048 * kBytesPerMb);
  EXPECT_EQ(Rules()[0], Rule(3, L"a.exe"));
  ExpectSaved();
  EXPECT_TRUE(::IsWindowVisible(Window())) << "Enter must not reach OK";

  // What was typed for a rule that is gone goes nowhere.
  NotifyDoubleClick(list, 1, 1);
  rules.Remove({5});
  EndBox(L"c.exe");
  NotifyDoubleClick(list, 1, 0);
  EXPECT_EQ(Rules(), RuleList{Rule(3, L"a.exe")});
}

TEST_F(RuleListTest, SecondCellCommitsTheFirst) {
  rules.Append({Rule(3, L"a.exe")});
  Open();
  NotifyDoubleClick(list, 0, 1);
  EXPECT_EQ(::SendMessageW(Box(), WM_GETFONT, 0, 0), ::SendMessageW(list, WM_GETFONT, 0, 0));
  ::SetWindowTextW(Box(), L"b.exe");
  // On the window's own thread, so that the first box's request is still on its way when the second opens.
  RunInWindow([this] {
    ::SetFocus(list);
    NotifyDoubleClick(list, 0, 2);
  });
  ::SendMessageW(Window(), WM_NULL, 0, 0);
  EXPECT_EQ(Rules()[0].processPattern, L"b.exe");
  EndBox(L"77");
  EXPECT_EQ(Rules()[0].maxHandles, 77U);
  ExpectSaved();
}

TEST_F(RuleListTest, TheEditorAddsARuleOfItsFieldsAndUsesAnIdUp) {
  rules.Append({Rule(4, L"old.exe")});
  Open();
  const std::uint32_t id = rules.NextRuleId();
  Answer(OpenDialog(IDC_ADD_RULE, kEditorTitle), IDCANCEL);
  EXPECT_EQ(Rules(), RuleList{Rule(4, L"old.exe")});

  // A double click below the rows adds too.
  for (const int message : {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP}) {
    ::PostMessageW(list, static_cast<UINT>(message), MK_LBUTTON, MAKELPARAM(100, 100));
  }
  HWND editor = WaitForDialog(kEditorTitle);
  EXPECT_EQ(FocusOf(editor), ::GetDlgItem(editor, IDC_PATTERN));
  EXPECT_EQ(::IsDlgButtonChecked(editor, IDC_ENABLED), UINT{BST_CHECKED});
  for (int field = IDC_PATTERN; field <= IDC_COOLDOWN; ++field) {
    EXPECT_EQ(TextOfItem(editor, field), field == IDC_COOLDOWN ? L"60" : L"") << field;
    // A value of its own for each field, so that no two can change places.
    ::SetDlgItemTextW(editor, field, std::to_wstring(field).c_str());
  }
  ::CheckDlgButton(editor, IDC_ENABLED, BST_UNCHECKED);
  Answer(editor, IDOK);
  EXPECT_EQ(Rules()[1], (ThresholdRule{id + 1, L"1020", false, 1021, 1022 * kBytesPerMb, 1023 * kBytesPerMb, 1024, 1025, 1026,
                                       1027, Rules()[0].alertActions, 1028}));
  EXPECT_EQ(RowCount(list), 2);
  ExpectSaved();
}

TEST_F(RuleListTest, TheEditorKeepsWhatIsNotTouchedOfTheUpperSelectedRule) {
  const std::wstring imported(300, L'q');  // longer than a field gives back
  rules.Append({Rule(8, imported.c_str()), Rule(9, L"b.exe"), Rule(10, L"c.exe")});
  (void)rules.Edit(9, [](ThresholdRule& rule) {
    rule.alertActions = 7;
    rule.maxWorkingSet = 1'572'864;
    rule.maxCpuPercent = 87.5;
    rule.cooldownSec = 0;
  });
  Open();
  const RuleList before = Rules();
  SelectRows(list, {0});
  Answer(OpenDialog(IDC_EDIT_RULE, kEditorTitle), IDOK);
  NotifyDoubleClick(list, 0, 1);
  Press(Box(), VK_RETURN);
  ASSERT_TRUE(WaitForNoBox());
  EXPECT_EQ(Rules()[0].processPattern, imported);

  SelectRows(list, {2, 1});
  HWND editor = OpenDialog(IDM_EDIT_RULE, kEditorTitle);
  std::wstring shown;
  for (const int field : {IDC_PATTERN, IDC_MAX_WORKING_SET, IDC_MAX_CPU, IDC_COOLDOWN}) shown += TextOfItem(editor, field) + L" ";
  EXPECT_EQ(shown, L"b.exe 1 88 0 ");
  ::SetDlgItemTextW(editor, IDC_PATTERN, std::wstring(300, L'p').c_str());
  ::SetDlgItemTextW(editor, IDC_MAX_CPU, L"12.5");
  Answer(editor, IDOK);
  ThresholdRule expected = before[1];
  expected.processPattern = std::wstring(255, L'p');
  expected.maxWorkingSet = kBytesPerMb;
  expected.maxCpuPercent = 12.5;
  expected.alertActions = ACTION_NOTIFY | ACTION_LOG;
  EXPECT_EQ(Rules()[1], expected);
  EXPECT_EQ(Rules()[2], before[2]);
  ExpectSaved();
}

}  // namespace
