// The main window under real mouse and keyboard input.

#include <gtest/gtest.h>

#include <vector>

#include "platform/handles.h"
#include "tests/ui/main_window_fixture.h"
#include "tests/ui/real_input.h"

namespace {

class MainWindowInputTest : public MainWindowTest {
 protected:
  void OpenInFront() {
    Open();
    ASSERT_TRUE(WaitUntil([this] { return ::GetForegroundWindow() == Window() && FocusOf(Window()) == list; }));
  }
  [[nodiscard]] HWND Box() const { return ::FindWindowExW(list, nullptr, L"Edit", nullptr); }
  [[nodiscard]] POINT InCell(int row, int column) const {
    const RECT cell = CellRectOf(list, row, column);  // of column 0: the whole row
    return {cell.left + 10, (cell.top + cell.bottom) / 2};
  }
  /// Double-clicks the cell and waits until a box over it has the keyboard.
  void OpenBoxByMouse(int row, int column) {
    ClickAt(list, InCell(row, column), 2);
    ASSERT_TRUE(WaitUntil([&] {
      POINT place = InCell(row, column);
      ::ClientToScreen(list, &place);
      RECT box{};
      return ::GetWindowRect(Box(), &box) && ::PtInRect(&box, place) && FocusOf(list) == Box();
    }));
  }
  bool WaitForNoBox() {
    return WaitUntil([this] { return Box() == nullptr; });
  }
  /// The ids that Tab visits, from the focus of the moment until it is back there.
  std::vector<int> TabOrder(HWND dialog) {
    std::vector<int> ids;
    HWND first = FocusOf(dialog);
    for (HWND focus = first; ids.size() < 40;) {
      ids.push_back(::GetDlgCtrlID(focus));
      PressKey(VK_TAB);
      if (!WaitUntil([&] { return FocusOf(dialog) != focus; })) break;
      focus = FocusOf(dialog);
      if (focus == first) break;
    }
    return ids;
  }
};

TEST_F(MainWindowInputTest, CellIsEditedByMouseAndKeyboard) {
  rules.Append({Rule(3, L"a.exe"), Rule(5, L"b.exe")});
  OpenInFront();
  OpenBoxByMouse(1, 2);
  TypeKeys("1500");
  PressKey(VK_RETURN);
  ASSERT_TRUE(WaitForNoBox());
  EXPECT_EQ(Rules()[1].maxHandles, 1500U);
  EXPECT_EQ(Cell(list, 1, 2), L"1500");

  OpenBoxByMouse(1, 2);
  TypeKeys("7");
  PressKey(VK_ESCAPE);
  ASSERT_TRUE(WaitForNoBox());
  EXPECT_EQ(Rules()[1].maxHandles, 1500U);

  // The second double click takes the focus from the first box, which commits.
  OpenBoxByMouse(0, 1);
  TypeKeys("new");
  OpenBoxByMouse(1, 6);
  EXPECT_EQ(Rules()[0].processPattern, L"new");
  TypeKeys("33");
  ClickAt(list, InCell(0, 8));
  ASSERT_TRUE(WaitForNoBox());
  EXPECT_EQ(Rules()[1].maxThreads, 33U);

  ClickAt(list, InCell(0, 0), 2);
  EXPECT_TRUE(WaitUntil([this] { return !Rules()[0].enabled; }));
  ExpectSaved();
}

TEST_F(MainWindowInputTest, TabReachesEveryControl) {
  OpenInFront();
  const std::vector<int> rulesPart = {1000, 1001, 1002, 1003, 1052, 1050, 1051, 1054};
  const std::vector<int> alertsPage = {1053};
  const std::vector<int> settingsPage = {1004, 1005, 1060, 1006, 1008, 1010, 1007, 1009, 1011};  // Apply is disabled
  for (const bool onSettings : {false, true}) {
    std::vector<int> expected = rulesPart;
    const auto& page = onSettings ? settingsPage : alertsPage;
    expected.insert(expected.end(), page.begin(), page.end());
    expected.insert(expected.end(), {1069, 1, 2});
    EXPECT_EQ(TabOrder(Window()), expected);
    ::SendMessageW(Item(IDC_TABS), TCM_SETCURFOCUS, 1, 0);
  }
  HWND editor = OpenDialog(IDC_ADD_RULE, kEditorTitle);
  EXPECT_EQ(TabOrder(editor), (std::vector<int>{1020, 1029, 1021, 1022, 1023, 1024, 1025, 1026, 1027, 1028, 1, 2}));
}

TEST_F(MainWindowInputTest, KeysOfTheRuleList) {
  rules.Append({Rule(3, L"a.exe")});
  OpenInFront();
  for (const auto& [key, modifier] : {std::pair<WORD, WORD>{VK_INSERT, 0}, {'A', VK_MENU}}) {
    PressKey(key, modifier);
    HWND editor = WaitForDialog(kEditorTitle);
    EXPECT_EQ(TextOfItem(editor, IDC_PATTERN), L"");
    PressKey(VK_ESCAPE);
    ASSERT_TRUE(WaitUntil([editor] { return !::IsWindow(editor); }));
  }
  SelectRows(list, {0});
  ::SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(list), TRUE);
  PressKey(VK_RETURN);
  HWND editor = WaitForDialog(kEditorTitle);
  EXPECT_EQ(TextOfItem(editor, IDC_PATTERN), L"a.exe");
  TypeKeys("typed");
  PressKey(VK_RETURN);
  ASSERT_TRUE(WaitUntil([editor] { return !::IsWindow(editor); }));
  EXPECT_TRUE(WaitUntil([this] { return Rules()[0].processPattern == L"typed"; }));

  SelectRows(list, {0});
  PressKey(VK_DELETE);
  HWND box = WaitForDialog(L"Confirm Remove");
  PressKey('C', VK_CONTROL);
  const auto copied = [] {
    const ClipboardLock clipboard(nullptr);
    HANDLE data = clipboard.IsOpen() ? ::GetClipboardData(CF_UNICODETEXT) : nullptr;
    const auto* text = data != nullptr ? static_cast<const wchar_t*>(::GlobalLock(data)) : nullptr;
    std::wstring result = text != nullptr ? text : L"";
    if (text != nullptr) ::GlobalUnlock(data);
    return result;
  };
  EXPECT_TRUE(WaitUntil([&] { return copied().find(L"Remove the selected rule?") != std::wstring::npos; }));
  PressKey('Y', VK_MENU);
  ASSERT_TRUE(WaitUntil([box] { return !::IsWindow(box); }));
  EXPECT_TRUE(WaitUntil([this] { return Rules().empty() && RowCount(list) == 0; }));

  PressKey(VK_RETURN);  // nothing is selected any more: OK
  EXPECT_TRUE(WaitUntil([this] { return Window() == nullptr; }));
}

}  // namespace
