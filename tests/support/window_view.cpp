#include "tests/support/window_driver.h"

#include <algorithm>

#include "platform/handles.h"
#include "platform/text_format.h"
#include "tests/support/theme_recorder.h"
#include "ui/dark/dark_menu_bar.h"
#include "ui/dark/dark_mode.h"

namespace {

std::wstring Hex(COLORREF color) { return FormatText(L"%06x", static_cast<unsigned>(color)); }
LONG_PTR StyleOf(HWND window) { return ::GetWindowLongPtrW(window, GWL_STYLE); }

/// Its place, and its size in place of right and bottom.
RECT RectIn(HWND window, HWND control) {
  RECT rect{};
  ::GetWindowRect(control, &rect);
  ::MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&rect), 2);
  return {rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top};
}

/// In dialog units, which no font changes; message boxes measure their texts and have pixels.
std::wstring RectText(HWND window, HWND control) {
  RECT unit{0, 0, 400, 800};
  if ((StyleOf(window) & DS_SETFONT) != 0) ::MapDialogRect(window, &unit);
  const RECT rect = RectIn(window, control);
  std::wstring text;
  for (const LONG x : {rect.left, rect.right}) text += L" " + std::to_wstring(::MulDiv(x, 400, unit.right));
  for (const LONG y : {rect.top, rect.bottom}) text += L" " + std::to_wstring(::MulDiv(y, 800, unit.bottom));
  return text;
}

std::wstring ColumnsOf(HWND list) {
  std::wstring text;
  RECT client{};
  ::GetClientRect(list, &client);
  wchar_t header[64] = L"";
  LVCOLUMNW column{LVCF_TEXT | LVCF_WIDTH, 0, 0, header, 64, 0, 0, 0, 0, 0, 0};
  for (WPARAM i = 0; ::SendMessageW(list, LVM_GETCOLUMNW, i, reinterpret_cast<LPARAM>(&column)); ++i) {
    client.right -= column.cx;
    // What a column takes of the list's rest is a matter of the machine's fonts.
    text += L" |" + std::wstring(header) + L" " + (client.right == 0 ? L"fills" : std::to_wstring(column.cx));
  }
  return text;
}

/// The colours that the painting leaves in the area, column by column.
std::vector<COLORREF> Painted(const RECT& area, const std::function<void(HDC)>& paint) {
  const WindowDc screen(nullptr);
  const Unique<HDC, ::DeleteDC> dc(::CreateCompatibleDC(screen.Get()));
  const Unique<HBITMAP, ::DeleteObject> bitmap(
      ::CreateCompatibleBitmap(screen.Get(), area.right - area.left, area.bottom - area.top));
  ::SelectObject(dc.get(), bitmap.get());
  ::SetViewportOrgEx(dc.get(), -area.left, -area.top, nullptr);
  paint(dc.get());
  std::vector<COLORREF> colors;
  for (LONG x = area.left; x < area.right; ++x) {
    for (LONG y = area.top; y < area.bottom; ++y) colors.push_back(::GetPixel(dc.get(), x, y));
  }
  return colors;
}

/// The colours from top to bottom in the middle of a window before anything is drawn on it.
std::wstring BackgroundOf(HWND window) {
  RECT client{};
  ::GetClientRect(window, &client);
  client.left = client.right / 2;
  client.right = client.left + 1;
  auto colors = Painted(client, [&](HDC dc) { ::SendMessageW(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0); });
  colors.erase(std::unique(colors.begin(), colors.end()), colors.end());
  std::wstring text = L" background";
  for (const COLORREF color : colors) text += L" " + Hex(color);
  return text;
}

/// What the window draws of a control that leaves that to it, as of its second part: an icon, or a text.
std::wstring DrawnOf(HWND window, HWND control) {
  constexpr RECT kArea = {0, 0, 40, 40};
  const auto id = static_cast<UINT>(::GetDlgCtrlID(control));
  const auto drawn = Painted(kArea, [&](HDC dc) {
    DRAWITEMSTRUCT item{0, id, 1, 0, 0, control, dc, kArea, 0};
    ::SendMessageW(window, WM_DRAWITEM, id, reinterpret_cast<LPARAM>(&item));
  });
  std::wstring text = L" draws on " + Hex(drawn.front());
  if (std::ranges::find(drawn, kDarkText) != drawn.end()) text += L" in the dark text's colour";
  constexpr WORD kHand = 32513;
  constexpr const wchar_t* kIcons[] = {L"hand", L"question", L"exclamation", L"asterisk"};
  for (std::size_t icon = 0; icon < std::size(kIcons); ++icon) {
    const auto expected = Painted(kArea, [&](HDC dc) {
      const UniqueBrush brush(::CreateSolidBrush(drawn.front()));
      ::FillRect(dc, &kArea, brush.get());
      ::DrawIcon(dc, 0, 0, ::LoadIconW(nullptr, MAKEINTRESOURCEW(kHand + icon)));
    });
    if (drawn == expected) text += L" the icon " + std::wstring(kIcons[icon]);
  }
  return text;
}

/// Text, background and brush that the parent answers the control.
std::wstring AnswerTo(HWND parent, HWND control) {
  const std::wstring name = ClassOf(control);
  const UINT message = name == L"Edit" ? WM_CTLCOLOREDIT : name == L"Button" ? WM_CTLCOLORBTN : WM_CTLCOLORSTATIC;
  const WindowDc dc(nullptr);
  const auto brush = reinterpret_cast<HGDIOBJ>(
      ::SendMessageW(parent, message, reinterpret_cast<WPARAM>(dc.Get()), reinterpret_cast<LPARAM>(control)));
  LOGBRUSH description{};
  ::GetObjectW(brush, sizeof(description), &description);
  if (brush == ::GetStockObject(DC_BRUSH)) description.lbColor = ::GetDCBrushColor(dc.Get());
  // Some systems' link control deletes the brush that it is given.
  if (name == L"SysLink") ::DeleteObject(brush);
  return Hex(::GetTextColor(dc.Get())) + L" on " + Hex(::GetBkColor(dc.Get())) + L", brush " + Hex(description.lbColor) + L":";
}

/// A list's own colours, and the one in which it has its header's texts drawn with what it answers the two stages of that.
std::wstring ListColoursOf(HWND list) {
  std::wstring text = L" list " + Hex(ListView_GetTextColor(list)) + L" on " + Hex(ListView_GetTextBkColor(list)) + L" and " +
                      Hex(ListView_GetBkColor(list)) + L", header";
  const WindowDc dc(nullptr);
  ::SetTextColor(dc.Get(), 0x123456);
  NMCUSTOMDRAW draw{};
  draw.hdr.code = NM_CUSTOMDRAW;
  draw.hdc = dc.Get();
  for (const int stage : {CDDS_PREPAINT, CDDS_ITEMPREPAINT}) {
    draw.dwDrawStage = static_cast<DWORD>(stage);
    text += FormatText(L" %d", static_cast<int>(::SendMessageW(list, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&draw))));
  }
  return text + L" " + Hex(::GetTextColor(dc.Get()));
}

/// What the window draws of its menu bar, and of an item in each of its states.
void AddMenuBar(HWND window, std::vector<std::wstring>& lines) {
  std::wstring& drawn = ThemeRecorder::notes.drawn;
  const WindowDc dc(nullptr);
  MenuBarDraw bar{::GetMenu(window), dc.Get(), 0};
  drawn.clear();
  ::SendMessageW(window, kDrawMenuBar, 0, reinterpret_cast<LPARAM>(&bar));
  if (drawn.empty()) return;
  lines.push_back(L"menu bar" + drawn);
  for (const int state : {0, ODS_GRAYED, ODS_DISABLED | ODS_SELECTED, ODS_SELECTED, ODS_HOTLIGHT | ODS_INACTIVE, ODS_DEFAULT,
                          ODS_INACTIVE, ODS_NOACCEL}) {
    MenuBarItemDraw item{{0, 0, 0, 0, static_cast<UINT>(state), nullptr, nullptr, {10, 20, 60, 40}, 0}, bar, 1};
    drawn.clear();
    ::SendMessageW(window, kDrawMenuBarItem, 0, reinterpret_cast<LPARAM>(&item));
    lines.push_back(FormatText(L"item %x", state) + drawn);
  }
}

std::wstring ThemeOf(HWND window) {
  const auto found = ThemeRecorder::notes.windows.find(window);
  return found == ThemeRecorder::notes.windows.end() ? L" -" : L" " + found->second.first + found->second.second;
}

}  // namespace

std::vector<std::wstring> LayoutOf(HWND window) {
  std::vector<std::wstring> lines;
  const RECT frame = RectIn(nullptr, window);
  lines.push_back((StyleOf(window) & WS_THICKFRAME) == 0 && (StyleOf(window) & DS_SETFONT) != 0
                      ? TextOf(window)
                      : FormatText(L"%ls %d %d", TextOf(window).c_str(), int{frame.right}, int{frame.bottom}));
  ForEachMenuItem(::GetMenu(window), [&lines](const MenuItem& item) {
    const std::wstring id = item.popup == nullptr && item.id != 0 ? L" #" + std::to_wstring(item.id) : L"";
    lines.push_back(std::wstring(2 * item.depth, L' ') + (item.text.empty() ? L"-" : item.text) + id);
  });
  for (HWND control : ControlsOf(window)) {
    const auto style = static_cast<DWORD>(StyleOf(control));
    const std::wstring name = ClassOf(control);
    std::wstring text = std::to_wstring(::GetDlgCtrlID(control)) + L" " + name + RectText(window, control) +
                        FormatText(L" %x", static_cast<unsigned>(style & 0xFFFF));
    if ((style & WS_TABSTOP) != 0) text += L" tab";
    if ((style & WS_GROUP) != 0) text += L" group";
    if ((style & WS_VISIBLE) == 0) text += L" hidden";
    const bool icon = name == L"Static" && (style & SS_TYPEMASK) == SS_ICON;
    if (!icon && name != L"Edit") text += L" \"" + TextOf(control) + L"\"";
    lines.push_back(name == L"SysListView32" ? text + ColumnsOf(control) : text);
  }
  return lines;
}

std::vector<std::wstring> ColoursOf(HWND window) {
  std::vector<std::wstring> lines = {L"window" + BackgroundOf(window) + ThemeOf(window)};
  std::map<std::wstring, std::wstring> answers;
  for (HWND control : ControlsOf(window)) {
    if (!::IsWindowVisible(control)) continue;
    const std::wstring name = ClassOf(control);
    const std::wstring id = std::to_wstring(::GetDlgCtrlID(control));
    const LONG_PTR style = StyleOf(control);
    answers[AnswerTo(window, control)] += L" " + id;
    std::wstring text = id + ThemeOf(control);
    if (name == L"SysListView32") {
      text += ThemeOf(ListView_GetHeader(control)) + ListColoursOf(control);
      if (HWND box = ::FindWindowExW(control, nullptr, L"Edit", nullptr)) text += L" box " + AnswerTo(control, box);
    }
    if (name == L"SysTabControl32") text += BackgroundOf(control);
    const bool drawn = name == L"Static" ? (style & SS_TYPEMASK) == SS_OWNERDRAW
                                         : name == L"SysTabControl32" && (style & TCS_OWNERDRAWFIXED) != 0;
    lines.push_back(drawn ? text + DrawnOf(window, control) : text);
  }
  for (const auto& [colors, ids] : answers) lines.push_back(colors + ids);
  if (::GetMenu(window) != nullptr) AddMenuBar(window, lines);
  return lines;
}
