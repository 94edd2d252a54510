#include "tests/ui/window_view.h"

#include <commctrl.h>
#include <uxtheme.h>

#include <algorithm>
#include <functional>
#include <map>
#include <vector>

#include "platform/handles.h"
#include "platform/text_format.h"
#include "tests/support/theme_recorder.h"
#include "tests/support/window_driver.h"
#include "ui/dark/dark_menu_bar.h"
#include "ui/dark/dark_mode.h"

namespace {

LONG_PTR StyleOf(HWND window) { return ::GetWindowLongPtrW(window, GWL_STYLE); }

RECT RectIn(HWND window, HWND control) {
  RECT rect{};
  ::GetWindowRect(control, &rect);
  ::MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&rect), 2);
  return {rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top};
}

/// In dialog units, which no font changes. Message boxes measure their texts, and a size grip follows the frame.
std::wstring RectText(HWND window, HWND control, const RECT& rect) {
  RECT unit{0, 0, 400, 800};
  if (!::MapDialogRect(window, &unit) || (StyleOf(window) & DS_SETFONT) == 0 || ClassOf(control) == L"ScrollBar") return {};
  const auto units = [](LONG pixels, LONG many, LONG of) { return static_cast<int>(::MulDiv(pixels, many, of)); };
  return FormatText(L" %d %d %d %d", units(rect.left, 400, unit.right), units(rect.right, 400, unit.right),
                    units(rect.top, 800, unit.bottom), units(rect.bottom, 800, unit.bottom));
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
  for (const COLORREF color : colors) text += FormatText(L" %06x", static_cast<unsigned>(color));
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
  std::wstring text = FormatText(L" draws on %06x", static_cast<unsigned>(drawn.front()));
  if (std::ranges::find(drawn, kDarkText) != drawn.end()) text += L" in the dark text's colour";
  for (const auto& [name, icon] : {std::pair{L"hand", IDI_HAND},
                                   {L"question", IDI_QUESTION},
                                   {L"exclamation", IDI_EXCLAMATION},
                                   {L"asterisk", IDI_ASTERISK}}) {
    const auto expected = Painted(kArea, [&, icon = icon](HDC dc) {
      const UniqueBrush brush(::CreateSolidBrush(drawn.front()));
      ::FillRect(dc, &kArea, brush.get());
      ::DrawIcon(dc, 0, 0, ::LoadIconW(nullptr, icon));
    });
    if (drawn == expected) text += L" the icon " + std::wstring(name);
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
  return FormatText(L"  %06x on %06x, brush %06x:", static_cast<unsigned>(::GetTextColor(dc.Get())),
                    static_cast<unsigned>(::GetBkColor(dc.Get())), static_cast<unsigned>(description.lbColor));
}

/// A list's own colours, and the one in which it has its header's texts drawn.
std::wstring ListColoursOf(HWND list) {
  const auto ask = [list](UINT message) { return static_cast<unsigned>(::SendMessageW(list, message, 0, 0)); };
  const WindowDc dc(nullptr);
  ::SetTextColor(dc.Get(), 0x123456);
  NMCUSTOMDRAW draw{};
  draw.hdr.code = NM_CUSTOMDRAW;
  draw.hdc = dc.Get();
  LRESULT answers[2] = {};
  for (const int stage : {0, 1}) {
    draw.dwDrawStage = stage == 0 ? CDDS_PREPAINT : CDDS_ITEMPREPAINT;
    answers[stage] = ::SendMessageW(list, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&draw));
  }
  return FormatText(L" list %06x on %06x and %06x, header %06x (%d %d)", ask(LVM_GETTEXTCOLOR), ask(LVM_GETTEXTBKCOLOR),
                    ask(LVM_GETBKCOLOR), static_cast<unsigned>(::GetTextColor(dc.Get())), static_cast<int>(answers[0]),
                    static_cast<int>(answers[1]));
}

/// What the window draws of its menu bar, and of an item in each of its states.
std::wstring MenuBarOf(HWND window) {
  std::wstring& drawn = ThemeRecorder::notes.drawn;
  const WindowDc dc(nullptr);
  MenuBarDraw bar{::GetMenu(window), dc.Get(), 0};
  drawn.clear();
  ::SendMessageW(window, kDrawMenuBar, 0, reinterpret_cast<LPARAM>(&bar));
  if (drawn.empty()) return {};
  std::wstring text = L"  menu bar" + drawn + L"\n";
  for (const int state : {0, ODS_GRAYED, ODS_DISABLED | ODS_SELECTED, ODS_SELECTED, ODS_HOTLIGHT | ODS_INACTIVE, ODS_DEFAULT,
                          ODS_INACTIVE, ODS_NOACCEL}) {
    MenuBarItemDraw item{{0, 0, 0, 0, static_cast<UINT>(state), nullptr, nullptr, {10, 20, 60, 40}, 0}, bar, 1};
    drawn.clear();
    ::SendMessageW(window, kDrawMenuBarItem, 0, reinterpret_cast<LPARAM>(&item));
    text += FormatText(L"  item %x", state) + drawn + L"\n";
  }
  return text;
}

std::wstring ThemeOf(HWND window) {
  const auto found = ThemeRecorder::notes.windows.find(window);
  return found == ThemeRecorder::notes.windows.end() ? L" -" : L" " + found->second.first + found->second.second;
}

}  // namespace

std::wstring LayoutOf(HWND window) {
  std::wstring text = L"  " + TextOf(window) + L"\n";
  ForEachMenuItem(::GetMenu(window), [&text](const MenuItem& item) {
    const std::wstring id = item.popup == nullptr && item.id != 0 ? L" #" + std::to_wstring(item.id) : L"";
    text += std::wstring(2 * item.depth + 4, L' ') + (item.text.empty() ? L"-" : item.text) + id + L"\n";
  });
  std::vector<RECT> before;
  for (HWND control : ControlsOf(window)) before.push_back(RectIn(window, control));
  const RECT frame = RectIn(nullptr, window);
  const bool resizable = (StyleOf(window) & WS_THICKFRAME) != 0;
  const auto resize = [window](LONG width, LONG height) {
    ::SetWindowPos(window, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
  };
  if (resizable) resize(frame.right + 40, frame.bottom + 30);
  for (std::size_t i = 0; HWND control : ControlsOf(window)) {
    const auto style = static_cast<DWORD>(StyleOf(control));
    const RECT& was = before[i++];
    const RECT now = RectIn(window, control);
    const std::pair<bool, const wchar_t*> marks[] = {
        {(style & WS_TABSTOP) != 0, L" tab"},    {(style & WS_GROUP) != 0, L" group"}, {(style & WS_VISIBLE) == 0, L" hidden"},
        {now.left != was.left, L" moves-right"}, {now.top != was.top, L" moves-down"}, {now.right != was.right, L" widens"},
        {now.bottom != was.bottom, L" grows"}};
    text += L"  " + std::to_wstring(::GetDlgCtrlID(control)) + L" " + ClassOf(control) + RectText(window, control, was);
    text += FormatText(L" %x", static_cast<unsigned>(style & 0xFFFF));
    for (const auto& [holds, mark] : marks) text += holds ? mark : L"";
    const bool icon = ClassOf(control) == L"Static" && (style & SS_TYPEMASK) == SS_ICON;
    if (!icon && ClassOf(control) != L"Edit") text += L" \"" + TextOf(control) + L"\"";
    text += ClassOf(control) == L"SysListView32" ? ColumnsOf(control) + L"\n" : L"\n";
  }
  if (!resizable) return text;
  resize(100, 100);
  const RECT least = RectIn(nullptr, window);
  resize(frame.right, frame.bottom);
  return text + FormatText(L"  least size: as opened and %d, %d%ls\n", static_cast<int>(least.right - frame.right),
                           static_cast<int>(least.bottom - frame.bottom),
                           least.bottom - frame.bottom == ::GetSystemMetrics(SM_CYMENU) ? L" (a menu bar)" : L"");
}

std::wstring ColoursOf(HWND window) {
  std::map<std::wstring, std::wstring> answers;
  std::wstring looks = L" " + BackgroundOf(window) + ThemeOf(window) + L"\n";
  for (HWND control : ControlsOf(window)) {
    if (!::IsWindowVisible(control)) continue;
    const std::wstring name = ClassOf(control);
    const std::wstring id = std::to_wstring(::GetDlgCtrlID(control));
    answers[AnswerTo(window, control)] += L" " + id;
    looks += L"  " + id + ThemeOf(control);
    if (name == L"SysListView32") {
      looks += ThemeOf(reinterpret_cast<HWND>(::SendMessageW(control, LVM_GETHEADER, 0, 0))) + ListColoursOf(control);
      if (HWND box = ::FindWindowExW(control, nullptr, L"Edit", nullptr)) looks += L" box" + AnswerTo(control, box);
    }
    if (name == L"SysTabControl32") looks += BackgroundOf(control) + (::GetWindowTheme(control) == nullptr ? L" plain" : L"");
    const LONG_PTR style = StyleOf(control);
    if ((name == L"Static" && (style & SS_TYPEMASK) == SS_OWNERDRAW) ||
        (name == L"SysTabControl32" && (style & TCS_OWNERDRAWFIXED) != 0))
      looks += DrawnOf(window, control);
    looks += L"\n";
  }
  for (const auto& [colors, ids] : answers) looks += colors + ids + L"\n";
  return ::GetMenu(window) != nullptr ? looks + MenuBarOf(window) : looks;
}
