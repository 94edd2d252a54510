// The main window under real mouse and keyboard input: it goes wherever the system sends it, so the window has to be in front.

#include <gtest/gtest.h>

#include <functional>
#include <string_view>
#include <vector>

#include "platform/handles.h"
#include "tests/support/main_window_fixture.h"

namespace {

void PressKey(WORD key, WORD modifier = 0) {
  const auto send = [](WORD code, DWORD flags) {
    ::keybd_event(static_cast<BYTE>(code), static_cast<BYTE>(::MapVirtualKeyW(code, MAPVK_VK_TO_VSC)), flags, 0);
  };
  if (modifier != 0) send(modifier, 0);
  send(key, 0);
  send(key, KEYEVENTF_KEYUP);
  if (modifier != 0) send(modifier, KEYEVENTF_KEYUP);
}

/// Letters and digits of a plain keyboard.
void TypeKeys(std::string_view keys) {
  for (const char key : keys) PressKey(static_cast<WORD>(::VkKeyScanA(key) & 0xFF));
}

/// One batch of input, so that no motion of the real pointer gets between: move there, then click so many times.
void ClickAt(POINT screen, int times) {
  constexpr int kFullScale = 65536;  // of absolute coordinates, whatever the size of the screen
  std::vector<INPUT> batch(1 + 2 * static_cast<std::size_t>(times));
  batch[0].mi.dx = ::MulDiv(screen.x, kFullScale, ::GetSystemMetrics(SM_CXSCREEN)) + 1;
  batch[0].mi.dy = ::MulDiv(screen.y, kFullScale, ::GetSystemMetrics(SM_CYSCREEN)) + 1;
  batch[0].mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
  for (std::size_t i = 1; i < batch.size(); ++i) batch[i].mi.dwFlags = i % 2 != 0 ? MOUSEEVENTF_LEFTDOWN : MOUSEEVENTF_LEFTUP;
  ::SendInput(static_cast<UINT>(batch.size()), batch.data(), sizeof(INPUT));
}

std::wstring ClipboardText() {
  const ClipboardLock clipboard(nullptr);
  HANDLE data = clipboard.IsOpen() ? ::GetClipboardData(CF_UNICODETEXT) : nullptr;
  const auto* text = data != nullptr ? static_cast<const wchar_t*>(::GlobalLock(data)) : nullptr;
  std::wstring copy = text != nullptr ? text : L"";
  if (text != nullptr) ::GlobalUnlock(data);
  return copy;
}

class MainWindowInputTest : public MainWindowTest {
 protected:
  void OpenInFront() {
    Open();
    ASSERT_TRUE(WaitUntil([this] { return ::GetForegroundWindow() == Window() && FocusOf(Window()) == list; }));
  }
  /// A place in the cell, on the screen.
  [[nodiscard]] POINT InCell(int row, int column) const {
    RECT cell{LVIR_BOUNDS, column, 0, 0};  // of column 0: the whole row
    ::SendMessageW(list, LVM_GETSUBITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&cell));
    POINT place{cell.left + 10, (cell.top + cell.bottom) / 2};
    ::ClientToScreen(list, &place);
    return place;
  }
  /// Clicks the cell so many times and waits for what that brings. Clicks again after a while: a late event of the pointer's last
  /// move, or of the window manager's placing the window, can send a click astray.
  [[nodiscard]] bool ClickUntil(int row, int column, int times, const std::function<bool()>& done) const {
    ULONGLONG nextClick = 0;
    return WaitUntil([&] {
      if (::GetTickCount64() >= nextClick) {
        ClickAt(InCell(row, column), times);
        nextClick = ::GetTickCount64() + 2500;
      }
      return done();
    });
  }
  /// Double-clicks the cell, waits until a box over it has the keyboard, and types.
  void TypeOver(int row, int column, std::string_view keys) {
    ASSERT_TRUE(ClickUntil(row, column, 2, [&] {
      RECT box{};
      return ::GetWindowRect(Box(), &box) && ::PtInRect(&box, InCell(row, column)) && FocusOf(list) == Box();
    }));
    TypeKeys(keys);
  }
  static void PressAndWaitForEnd(HWND dialog, WORD key, WORD modifier = 0) {
    PressKey(key, modifier);
    ASSERT_TRUE(WaitUntil([dialog] { return !::IsWindow(dialog); }));
  }
  /// The ids that Tab visits, from the focus of the moment until it is back there.
  static std::vector<int> TabOrder(HWND dialog) {
    std::vector<int> ids;
    HWND first = FocusOf(dialog);
    HWND focus = first;
    do {
      ids.push_back(::GetDlgCtrlID(focus));
      PressKey(VK_TAB);
      if (!WaitUntil([&] { return FocusOf(dialog) != focus; })) break;
      focus = FocusOf(dialog);
    } while (focus != first && ids.size() < 40);
    return ids;
  }
};

TEST_F(MainWindowInputTest, CellIsEditedByMouseAndKeyboard) {
  rules.Append({Rule(3, L"a.exe"), Rule(5, L"b.exe")});
  OpenInFront();
  TypeOver(1, 2, "1500");
  PressKey(VK_RETURN);
  ASSERT_TRUE(WaitForNoBox());
  EXPECT_EQ(Rules()[1].maxHandles, 1500U);
  EXPECT_EQ(Cell(list, 1, 2), L"1500");

  TypeOver(1, 2, "7");
  PressKey(VK_ESCAPE);
  ASSERT_TRUE(WaitForNoBox());
  EXPECT_EQ(Rules()[1].maxHandles, 1500U);

  // The second double click takes the focus from the first box, which commits.
  TypeOver(0, 1, "new");
  TypeOver(1, 6, "33");
  EXPECT_EQ(Rules()[0].processPattern, L"new");
  EXPECT_TRUE(ClickUntil(0, 8, 1, [this] { return Box() == nullptr; }));
  EXPECT_EQ(Rules()[1].maxThreads, 33U);

  EXPECT_TRUE(ClickUntil(0, 0, 2, [this] { return !Rules()[0].enabled; }));
  ExpectSaved();
}

TEST_F(MainWindowInputTest, TabReachesEveryControlOfThePageThatIsShown) {
  OpenInFront();
  const std::vector<int> pageControls[] = {{1053}, {1004, 1005, 1060, 1006, 1008, 1010, 1007, 1009, 1011}};
  const std::vector<int> outOfReach = {1055, 1058, 1061, 1070};  // of the settings: frame, texts, disabled Apply
  for (const std::size_t page : {0U, 1U, 0U}) {
    ::SendMessageW(Item(IDC_TABS), TCM_SETCURFOCUS, page, 0);
    EXPECT_EQ(::IsWindowVisible(Item(IDC_RECENT_ALERTS)) != FALSE, page == 0);
    for (const int id : outOfReach) EXPECT_EQ(::IsWindowVisible(Item(id)) != FALSE, page == 1) << id;
    std::vector<int> expected = {1000, 1001, 1002, 1003, 1052, 1050, 1051, 1054};
    expected.insert(expected.end(), pageControls[page].begin(), pageControls[page].end());
    expected.insert(expected.end(), {1069, 1, 2});
    EXPECT_EQ(TabOrder(Window()), expected);
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
    PressAndWaitForEnd(editor, VK_ESCAPE);
  }
  for (const auto& [key, title] : {std::pair<WORD, const wchar_t*>{'I', L"Open"}, {'E', L"Save As"}}) {
    PressKey(key, VK_CONTROL);
    HWND chooser = WaitForDialogWith(kFileNameBox);
    EXPECT_EQ(TextOf(chooser), title);
    EXPECT_EQ(TextOfItem(chooser, kFileTypeBox), L"JSON Files (*.json)");
    EXPECT_TRUE(key == 'E' || TextOfItem(chooser, kFolderBox) == L"Documents") << TextOfItem(chooser, kFolderBox);
    PostCommand(chooser, IDCANCEL);
    ASSERT_TRUE(WaitUntil([chooser] { return !::IsWindow(chooser); }));
  }
  // In an edit box these keys are its own.
  ::SendMessageW(Item(IDC_TABS), TCM_SETCURFOCUS, 1, 0);
  ::SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(IDC_THROTTLE)), TRUE);
  PressKey(VK_INSERT);
  PressKey('I', VK_CONTROL);
  TypeKeys("77");
  EXPECT_TRUE(WaitUntil([this] { return TextOfItem(Window(), IDC_THROTTLE) == L"77"; }));

  SelectRows(list, {0});
  ::SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(list), TRUE);
  PressKey(VK_RETURN);
  HWND editor = WaitForDialog(kEditorTitle);
  EXPECT_EQ(TextOfItem(editor, IDC_PATTERN), L"a.exe");
  TypeKeys("typed");
  PressAndWaitForEnd(editor, VK_RETURN);
  EXPECT_TRUE(WaitUntil([this] { return Rules()[0].processPattern == L"typed"; }));

  SelectRows(list, {0});
  PressKey(VK_DELETE);
  HWND box = WaitForDialog(L"Confirm Remove");
  ::SendMessageW(box, WM_INITDIALOG, 0, 0);  // from a stranger
  ::SendMessageW(Window(), WM_INITDIALOG, 0, 0);
  const DWORD before = ::GetClipboardSequenceNumber();
  PressKey(VK_INSERT);  // the main window's key, not the box's
  PressKey('C');        // alone it does nothing
  PressKey('C', VK_CONTROL);
  const std::wstring line = L"---------------------------\r\n";
  const std::wstring whole =
      line + L"Confirm Remove\r\n" + line + L"Remove the selected rule?\r\n" + line + L"Yes   No   \r\n" + line;
  // Nobody looks into the clipboard before: the box could not open it then.
  EXPECT_TRUE(WaitUntil([before] { return ::GetClipboardSequenceNumber() != before; }));
  EXPECT_TRUE(WaitUntil([&] { return ClipboardText() == whole; }));
  EXPECT_EQ(::FindWindowW(nullptr, kEditorTitle), nullptr);
  PressAndWaitForEnd(box, 'Y', VK_MENU);
  EXPECT_TRUE(WaitUntil([this] { return Rules().empty() && RowCount(list) == 0; }));

  PressKey(VK_RETURN);  // nothing is selected any more: OK
  EXPECT_TRUE(WaitUntil([this] { return Window() == nullptr; }));
}

}  // namespace
