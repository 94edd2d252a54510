#include "ui/framework/dialog.h"

#include <algorithm>

#include "platform/out_of_memory.h"
#include "ui/dark/dark_mode.h"
#include "ui/framework/resources.h"

namespace {

LayoutRect ControlRect(HWND dialog, HWND control) {
  RECT rect{};
  ::GetWindowRect(control, &rect);
  ::MapWindowPoints(HWND_DESKTOP, dialog, reinterpret_cast<POINT*>(&rect), 2);
  return {rect.left, rect.top, rect.right, rect.bottom};
}

}  // namespace

Dialog::Dialog(HINSTANCE instance, WORD templateId) : instance_(instance), templateId_(templateId) {}

Dialog::~Dialog() {
  if (window_ != nullptr) ::SetWindowLongPtrW(window_, DWLP_USER, 0);
}

INT_PTR Dialog::RunModal(HWND owner) {
  return ::DialogBoxParamW(instance_, MAKEINTRESOURCEW(templateId_), owner, &Dialog::Procedure, reinterpret_cast<LPARAM>(this));
}

HWND Dialog::CreateFrom(std::span<const std::byte> dialogTemplate, HWND owner) {
  return ::CreateDialogIndirectParamW(instance_, reinterpret_cast<const DLGTEMPLATE*>(dialogTemplate.data()), owner,
                                      &Dialog::Procedure, reinterpret_cast<LPARAM>(this));
}

HWND Dialog::CreateModeless(HWND owner) {
  return ::CreateDialogParamW(instance_, MAKEINTRESOURCEW(templateId_), owner, &Dialog::Procedure,
                              reinterpret_cast<LPARAM>(this));
}

bool Dialog::OnCommand(WORD id, WORD) {
  if (id != IDOK && id != IDCANCEL) return false;
  End(id);
  return true;
}

INT_PTR Dialog::OnNotify(const NMHDR&) { return FALSE; }
void Dialog::OnTimer(UINT_PTR) {}
std::optional<INT_PTR> Dialog::OnMessage(UINT, WPARAM, LPARAM) { return std::nullopt; }
void Dialog::OnDestroy() {}

void Dialog::End(INT_PTR result) { ::EndDialog(window_, result); }

INT_PTR Dialog::Reply(LRESULT result) const {
  ::SetWindowLongPtrW(window_, DWLP_MSGRESULT, result);
  return TRUE;
}

HWND Dialog::Item(int id) const { return ::GetDlgItem(window_, id); }

std::wstring Dialog::ItemText(int id, std::size_t maxChars) const {
  std::wstring text(maxChars + 1, L'\0');
  text.resize(::GetDlgItemTextW(window_, id, text.data(), static_cast<int>(text.size())));
  return text;
}

void Dialog::SetItemText(int id, const std::wstring& text) const { ::SetDlgItemTextW(window_, id, text.c_str()); }

void Dialog::SetChecked(int id, bool checked) const { ::CheckDlgButton(window_, id, checked ? BST_CHECKED : BST_UNCHECKED); }
bool Dialog::IsChecked(int id) const { return ::IsDlgButtonChecked(window_, id) == BST_CHECKED; }

void Dialog::ShowItem(int id, bool shown) const {
  if (HWND item = Item(id)) ::ShowWindow(item, shown ? SW_SHOW : SW_HIDE);
}

void Dialog::ApplyDarkMode(std::span<const int> controlIds, DarkMenuBar menuBar) {
  ApplyDarkModeToDialog(window_, kDarkText, kDarkBackground, controlIds, menuBar);
}

SIZE Dialog::TemplateClient() const {
  // The beginning of an extended template, which all of the program's are.
  struct Header {
    WORD version, signature;
    DWORD help, extendedStyle, style;
    WORD items;
    short x, y, width, height;
  };
  HRSRC resource = ::FindResourceW(instance_, MAKEINTRESOURCEW(templateId_), RT_DIALOG);
  const auto* header =
      resource == nullptr ? nullptr : static_cast<const Header*>(::LockResource(::LoadResource(instance_, resource)));
  if (header == nullptr || header->signature != 0xFFFF) return {};
  RECT client{0, 0, header->width, header->height};
  ::MapDialogRect(window_, &client);
  return {client.right, client.bottom - (::GetMenu(window_) != nullptr ? ::GetSystemMetrics(SM_CYMENU) : 0)};
}

void Dialog::StartLayout(std::span<const AnchorRow> rows, int extraMinHeightPx, bool eraseOnResize) {
  RECT client{};
  RECT frame{};
  ::GetClientRect(window_, &client);
  ::GetWindowRect(window_, &frame);
  const SIZE whole = TemplateClient();
  const LONG cutWidth = std::max(0L, whole.cx - client.right);
  const LONG cutHeight = std::max(0L, whole.cy - client.bottom);
  initialClient_ = {client.right + cutWidth, client.bottom + cutHeight};
  minTrack_ = {frame.right - frame.left + cutWidth, frame.bottom - frame.top + cutHeight + extraMinHeightPx};
  eraseOnResize_ = eraseOnResize;
  anchors_.clear();
  LONG lowest = 0;
  for (const AnchorRow& row : rows) {
    HWND control = Item(row.controlId);
    if (control == nullptr) continue;
    anchors_.push_back({row.controlId, row.flags, ControlRect(window_, control), initialClient_.cx});
    const LayoutRect& rect = anchors_.back().rect;
    constexpr int kLeastHeightPx = 44;  // at 96 dpi: a header and a row
    if ((row.flags & ANCHOR_MOVE_DOWN) != 0) lowest = std::max<LONG>(lowest, rect.bottom);
    if ((row.flags & ANCHOR_GIVE_HEIGHT) != 0) givable_ = std::max(0, rect.bottom - rect.top - ScaleForDpi(kLeastHeightPx));
  }
  constexpr int kMarginPx = 8;  // at 96 dpi
  strip_ = std::max<LONG>(0, initialClient_.cy - lowest - ScaleForDpi(kMarginPx));
}

INT_PTR CALLBACK Dialog::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
  auto* dialog = reinterpret_cast<Dialog*>(::GetWindowLongPtrW(window, DWLP_USER));
  if (message == WM_INITDIALOG) {
    // Any program can send it again: what it then points at is none of ours.
    if (dialog != nullptr) return FALSE;
    dialog = reinterpret_cast<Dialog*>(lParam);
    dialog->window_ = window;
    ::SetWindowLongPtrW(window, DWLP_USER, lParam);
  }
  // Null for the few messages before WM_INITDIALOG and after the window has let go of its object.
  if (dialog == nullptr) return FALSE;
  INT_PTR result = FALSE;
  if (!DoUnlessOutOfMemory(L"Dialog", [&] { result = dialog->Handle(message, wParam, lParam); }) && message == WM_INITDIALOG) {
    dialog->End(-1);  // half of its controls are not filled
  }
  if (message == WM_NCDESTROY) {
    ::SetWindowLongPtrW(window, DWLP_USER, 0);
    dialog->window_ = nullptr;
  }
  return result;
}

INT_PTR Dialog::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_INITDIALOG:
      if (templateId_ != kNoTemplate) SetDialogIcons(window_);
      return OnInitDialog();
    case WM_COMMAND:
      return OnCommand(LOWORD(wParam), HIWORD(wParam));
    case WM_NOTIFY:
      return OnNotify(*reinterpret_cast<const NMHDR*>(lParam));
    case WM_TIMER:
      OnTimer(wParam);
      return TRUE;
    case WM_SIZE:
      OnSize(wParam);
      break;
    case WM_GETMINMAXINFO:
      if (minTrack_.cx >= 1) reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {minTrack_.cx, minTrack_.cy};
      break;
    case WM_DESTROY:
      OnDestroy();
      return FALSE;
    default:
      break;
  }
  return OnMessage(message, wParam, lParam).value_or(FALSE);
}

void Dialog::FitWorkArea() {
  RECT frame{};
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  if (!::GetWindowRect(window_, &frame) || !::GetMonitorInfoW(::MonitorFromWindow(window_, MONITOR_DEFAULTTONEAREST), &monitor))
    return;
  const RECT& work = monitor.rcWork;
  const int width = std::min(frame.right - frame.left, work.right - work.left);
  const int height = std::min(frame.bottom - frame.top, work.bottom - work.top);
  minTrack_ = {std::min(minTrack_.cx, work.right - work.left), std::min(minTrack_.cy, work.bottom - work.top)};
  if (width != frame.right - frame.left || height != frame.bottom - frame.top) {
    const int x = std::clamp<int>(frame.left, work.left, work.right - width);
    const int y = std::clamp<int>(frame.top, work.top, work.bottom - height);
    ::SetWindowPos(window_, nullptr, x, y, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
  }
  RECT client{};
  ::GetClientRect(window_, &client);
  // One that the system has made no larger than that keeps its size, so that nothing has told its controls.
  if (client.right < initialClient_.cx || client.bottom < initialClient_.cy)
    ::SendMessageW(window_, WM_SIZE, SIZE_RESTORED, MAKELPARAM(client.right, client.bottom));
}

void Dialog::OnSize(WPARAM kind) {
  if (kind == SIZE_MINIMIZED || initialClient_.cx < 1) return;
  RECT client{};
  ::GetClientRect(window_, &client);
  const std::int32_t dx = client.right - initialClient_.cx;
  const std::int32_t growth = client.bottom - initialClient_.cy;
  const std::int32_t dy = growth >= 0 ? growth : std::min(0, growth + strip_);
  const std::int32_t given = std::clamp(-dy, 0, givable_);
  HDWP positions = ::BeginDeferWindowPos(static_cast<int>(anchors_.size()));
  for (const LayoutAnchor& anchor : anchors_) {
    HWND control = Item(anchor.controlId);
    if (control == nullptr || positions == nullptr) continue;
    const LayoutRect rect = ResolveAnchor(anchor, dx, dy, given);
    positions = ::DeferWindowPos(positions, control, nullptr, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                                 SWP_NOZORDER | SWP_NOACTIVATE);
  }
  if (positions != nullptr) ::EndDeferWindowPos(positions);
  ::InvalidateRect(window_, nullptr, eraseOnResize_);
}
