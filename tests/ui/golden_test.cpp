// Every window of the program as a text: its controls in their tab order, what they say, and how they follow a larger frame,
// against golden/<window>.txt. And, light and dark, whether what it says can be read. VANTORA_GOLDEN=write writes the files anew.

#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "platform/handles.h"
#include "platform/text_encoding.h"
#include "platform/text_format.h"
#include "res/resource.h"
#include "tests/support/test_program.h"
#include "tests/support/theme_recorder.h"
#include "tests/support/window_driver.h"
#include "ui/alerts/alert_log_window.h"
#include "ui/dark/dark_mode.h"
#include "ui/dialogs/about_dialog.h"
#include "ui/dialogs/exclusions_dialog.h"
#include "ui/dialogs/update_progress_dialog.h"
#include "ui/main_window/main_window_thread.h"
#include "ui/message_box/message_box.h"
#include "ui/rules/rule_editor.h"

namespace {

void DescribeMenu(HMENU menu, const std::wstring& indent, std::wstring& text) {
  for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
    wchar_t item[256] = L"";
    ::GetMenuStringW(menu, static_cast<UINT>(i), item, 256, MF_BYPOSITION);
    const UINT id = ::GetMenuItemID(menu, i);
    text += indent + (*item != L'\0' ? item : L"-") + (id != 0 && id != UINT_MAX ? L" #" + std::to_wstring(id) : L"") + L"\n";
    if (HMENU popup = ::GetSubMenu(menu, i)) DescribeMenu(popup, indent + L"  ", text);
  }
}

std::wstring DescribeList(HWND list) {
  std::wstring text;
  int columns = 0;
  int left = 0;
  RECT client{};
  ::GetClientRect(list, &client);
  for (wchar_t header[64] = L"";; ++columns) {
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH;
    column.pszText = header;
    column.cchTextMax = 64;
    if (!::SendMessageW(list, LVM_GETCOLUMNW, static_cast<WPARAM>(columns), reinterpret_cast<LPARAM>(&column))) break;
    left += column.cx;
    // What a column takes of the list's rest is a matter of the machine's fonts.
    text += L" |" + std::wstring(header) + L" " + (left == client.right ? L"fills" : std::to_wstring(column.cx));
  }
  for (int row = 0; row < RowCount(list); ++row) {
    text += L"\n     ";
    for (int column = 0; column < columns; ++column) text += L" |" + Cell(list, row, column);
  }
  return text;
}

RECT RectIn(HWND window, HWND control) {
  RECT rect{};
  ::GetWindowRect(control, &rect);
  ::MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&rect), 2);
  return rect;
}

/// In dialog units, which no font changes. Message boxes measure their texts, and a size grip follows the frame.
std::wstring RectText(HWND window, HWND control, const RECT& rect) {
  RECT unit{0, 0, 400, 800};
  if (!::MapDialogRect(window, &unit) || ::GetDlgItem(window, IDYES) != nullptr || ClassOf(control) == L"ScrollBar") return {};
  std::wstring text;
  for (const LONG x : {rect.left, rect.right - rect.left}) text += L" " + std::to_wstring(::MulDiv(x, 400, unit.right));
  for (const LONG y : {rect.top, rect.bottom - rect.top}) text += L" " + std::to_wstring(::MulDiv(y, 800, unit.bottom));
  return text;
}

std::wstring Describe(HWND window) {
  std::wstring text = TextOf(window) + L"\n";
  if (HMENU menu = ::GetMenu(window)) DescribeMenu(menu, L"  ", text);
  std::vector<RECT> before;
  for (HWND control : ControlsOf(window)) before.push_back(RectIn(window, control));
  RECT frame{};
  ::GetWindowRect(window, &frame);
  const bool resizable = (::GetWindowLongPtrW(window, GWL_STYLE) & WS_THICKFRAME) != 0;
  if (resizable)
    ::SetWindowPos(window, nullptr, 0, 0, frame.right - frame.left + 40, frame.bottom - frame.top + 30,
                   SWP_NOMOVE | SWP_NOZORDER);
  ::SendMessageW(window, WM_NULL, 0, 0);
  std::size_t index = 0;
  for (HWND control : ControlsOf(window)) {
    const auto style = static_cast<DWORD>(::GetWindowLongPtrW(control, GWL_STYLE));
    const RECT now = RectIn(window, control);
    const RECT& was = before[index++];
    const bool button = ClassOf(control) == L"Button";
    const std::pair<bool, const wchar_t*> marks[] = {
        {(style & WS_TABSTOP) != 0, L" tab"},
        {(style & WS_GROUP) != 0, L" group"},
        {(style & WS_VISIBLE) == 0, L" hidden"},
        {(style & WS_DISABLED) != 0, L" disabled"},
        {button && (style & BS_TYPEMASK) == BS_DEFPUSHBUTTON, L" default"},
        {button && ::SendMessageW(control, BM_GETCHECK, 0, 0) == BST_CHECKED, L" checked"},
        {now.left != was.left, L" moves-right"},
        {now.top != was.top, L" moves-down"},
        {now.right - now.left != was.right - was.left, L" widens"},
        {now.bottom - now.top != was.bottom - was.top, L" grows"}};
    text += std::to_wstring(::GetDlgCtrlID(control)) + L" " + ClassOf(control) + RectText(window, control, was);
    text += FormatText(L" %x", static_cast<unsigned>(style & 0xFFFF));
    for (const auto& [holds, mark] : marks) text += holds ? mark : L"";
    if (const std::wstring words = TextOf(control); !words.empty()) text += L" \"" + words + L"\"";
    text += ClassOf(control) == L"SysListView32" ? DescribeList(control) + L"\n" : std::wstring(L"\n");
  }
  if (!resizable) return text;
  RECT least{};
  ::SetWindowPos(window, nullptr, 0, 0, 100, 100, SWP_NOMOVE | SWP_NOZORDER);
  ::GetWindowRect(window, &least);
  const SIZE more = {least.right - least.left - (frame.right - frame.left),
                     least.bottom - least.top - (frame.bottom - frame.top)};
  return text + FormatText(L"least size: as opened and %d, %d%ls\n", static_cast<int>(more.cx), static_cast<int>(more.cy),
                           more.cy == ::GetSystemMetrics(SM_CYMENU) ? L" (a menu bar)" : L"");
}

/// Which control got which theme in the dark, and whether it may be dark.
std::wstring DescribeThemes(HWND window, const ThemeNotes& notes) {
  std::wstring text = L"dark, title bar " + std::to_wstring(notes.composed.empty() ? -1 : notes.composed.back()) + L":";
  for (HWND control : ControlsOf(window)) {
    const auto allowed = std::ranges::find(notes.allowed, control, [](const auto& call) { return call.first; });
    text += L" " + std::to_wstring(::GetDlgCtrlID(control)) + L"=" + notes.ThemeOf(control);
    if (allowed == notes.allowed.end()) text += L"(light)";
  }
  return text + L"\n";
}

/// How far two colours differ in lightness: 1 to 21.
double Contrast(COLORREF a, COLORREF b) {
  const auto light = [](COLORREF color) {
    const auto part = [](int value) { return std::pow(value / 255.0, 2.2); };
    return 0.2126 * part(GetRValue(color)) + 0.7152 * part(GetGValue(color)) + 0.0722 * part(GetBValue(color)) + 0.05;
  };
  return std::max(light(a), light(b)) / std::min(light(a), light(b));
}

/// What its window answers a control that asks for its colours.
void ExpectReadable(HWND window, bool dark) {
  for (HWND control : ControlsOf(window)) {
    const std::wstring name = ClassOf(control);
    const UINT message = name == L"Edit" ? WM_CTLCOLOREDIT : name == L"Button" ? WM_CTLCOLORBTN : WM_CTLCOLORSTATIC;
    const WindowDc dc(nullptr);
    ::SetBkColor(dc.Get(), ::GetSysColor(name == L"Edit" ? COLOR_WINDOW : COLOR_3DFACE));
    ::SendMessageW(window, message, reinterpret_cast<WPARAM>(dc.Get()), reinterpret_cast<LPARAM>(control));
    const COLORREF text = ::GetTextColor(dc.Get());
    const COLORREF background = ::GetBkColor(dc.Get());
    EXPECT_GE(Contrast(text, background), 4.5) << ::GetDlgCtrlID(control);
    EXPECT_EQ(Contrast(background, 0) < 3, dark) << ::GetDlgCtrlID(control);
  }
}

struct Window {
  const char* name;
  void (*open)(Program& program);
  int page = 0;
  int button = IDCANCEL;  ///< one that it has
};

void PrintTo(const Window& window, std::ostream* out) { *out << window.name; }

void Editor(Program& program) {
  ThresholdRule rule = program.rules.Snapshot()->front();
  (void)RunRuleEditor(program.instance, nullptr, rule);
}

class Golden : public testing::TestWithParam<Window>, protected TestProgram {
 protected:
  Golden() {
    rules.Append({{1, L"a*.exe", true, 11, 12 * kBytesPerMb, 13 * kBytesPerMb, 14, 15, 16, 17, 3, 18}});
    recentAlerts.Append({{2026, 3, 4, 5, 9, 7, 3, 0}, 41, L"app.exe", 1, L"Threads: 9 > 8"});
    engine.SetExclusions({L"spared.exe"});
    settings.Update([](AppSettings& s) { s = {5, 21, 24, true, L"C:\\alerts.log", L"C:\\ding.wav", {}}; });
  }
  static void SetAppsLight(DWORD light) {
    ::RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
                      L"AppsUseLightTheme", REG_DWORD, &light, sizeof light);
  }
};

TEST_P(Golden, IsAsRecordedAndReadableLightAndDark) {
  std::string now;
  for (const bool dark : {false, true}) {
    SCOPED_TRACE(dark ? "dark" : "light");
    const ThemeRecorder theme(19045, dark);
    SetAppsLight(dark ? 0 : 1);
    const WindowThread thread([this] { GetParam().open(program); });
    HWND window = WaitForDialogWith(GetParam().button);
    ASSERT_NE(window, nullptr);
    ::SendMessageW(window, WM_NULL, 0, 0);
    if (GetParam().page != 0) ::SendDlgItemMessageW(window, IDC_TABS, TCM_SETCURFOCUS, 1, 0);
    EXPECT_TRUE(WaitUntil([&] {
      return RowCount(::GetDlgItem(window, IDC_RECENT_ALERTS)) == 1 || ::GetDlgItem(window, IDC_RECENT_ALERTS) == nullptr;
    }));
    ExpectReadable(window, dark);
    now += EncodeUtf8(dark ? DescribeThemes(window, ThemeRecorder::notes) : Describe(window));
    PostCommand(window, GetParam().button);
    EXPECT_TRUE(thread.WaitForEnd());
  }
  const std::string path = std::string(VANTORA_GOLDEN_FOLDER) + "/" + GetParam().name + ".txt";
  if (std::getenv("VANTORA_GOLDEN") != nullptr) std::ofstream(path, std::ios::binary) << now;
  std::ostringstream recorded;
  recorded << std::ifstream(path, std::ios::binary).rdbuf();
  EXPECT_EQ(now, recorded.str());
  SetAppsLight(1);
}

template <UINT Style>
void Box(Program&) {
  XMessageBox(nullptr, L"Text", L"Caption", Style);
}

constexpr Window kWindows[] = {
    {"main", [](Program& program) { MainDialogThread(program); }},
    {"main-settings", [](Program& program) { MainDialogThread(program); }, 1},
    {"rule-editor", &Editor},
    {"alert-log", [](Program& program) { AlertLogDialogThread(program); }},
    {"exclusions", [](Program& program) { RunExclusionsDialog(nullptr, program); }},
    {"about", [](Program& program) { RunAboutDialog(nullptr, program); }, 0, IDOK},
    {"update-progress", [](Program& program) { UpdateProgressDialog(program.instance).RunModal(nullptr); }},
    {"box-confirm", &Box<MB_YESNOCANCEL | MB_ICONEXCLAMATION | MB_DEFBUTTON2>},
};
INSTANTIATE_TEST_SUITE_P(Windows, Golden, testing::ValuesIn(kWindows), [](const auto& each) {
  std::string name = each.param.name;
  std::erase(name, '-');
  return name;
});

}  // namespace
