#include "ui/rules/in_place_edit.h"

#include <commctrl.h>

#include <utility>

#include "res/messages.h"
#include "ui/framework/resources.h"
#include "ui/rules/rule_field_text.h"
#include "ui/rules/rule_list_model.h"

namespace {

constexpr UINT_PTR kSubclassId = 1;
constexpr int kTextBufferChars = static_cast<int>(kMaxPatternChars) + 1;

std::wstring CellText(HWND list, int row, int column) {
  wchar_t text[kTextBufferChars] = {};
  LVITEMW item{};
  item.iSubItem = column;
  item.pszText = text;
  item.cchTextMax = kTextBufferChars;
  ::SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
  return text;
}

RECT CellRect(HWND list, int row, int column) {
  RECT rect{};
  rect.left = LVIR_BOUNDS;
  rect.top = column;
  ::SendMessageW(list, LVM_GETSUBITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&rect));
  return rect;
}

}  // namespace

void InPlaceEdit::Start(HWND list, int row, int column) {
  const RECT cell = CellRect(list, row, column);
  std::wstring text = EditTextOfCell(CellText(list, row, column));
  HWND box = ::CreateWindowExW(0, WC_EDITW, text.c_str(), WS_CHILD | WS_VISIBLE | WS_BORDER | ES_AUTOHSCROLL, cell.left, cell.top,
                               cell.right - cell.left, cell.bottom - cell.top, list, nullptr, nullptr, nullptr);
  if (box == nullptr) return;
  window_ = ::GetParent(list);
  box_ = box;
  row_ = row;
  column_ = column;
  shownText_ = std::move(text);
  ::SendMessageW(box, WM_SETFONT, static_cast<WPARAM>(::SendMessageW(list, WM_GETFONT, 0, 0)), TRUE);
  ::SendMessageW(box, EM_SETMODIFY, FALSE, 0);  // some systems count the text that it is made with
  ::SendMessageW(box, EM_SETSEL, 0, -1);
  ::SetFocus(box);
  ::SetWindowSubclass(box, &InPlaceEditSubclassProc, kSubclassId, reinterpret_cast<DWORD_PTR>(this));
}

std::optional<InPlaceEdit::Entry> InPlaceEdit::Content() const {
  if (box_ == nullptr) return std::nullopt;
  wchar_t text[kTextBufferChars] = {};
  ::GetWindowTextW(box_, text, kTextBufferChars);
  return Entry{row_, column_, text, IsEdited(box_, shownText_, text)};
}

void InPlaceEdit::Close() {
  if (box_ == nullptr) return;
  row_ = -1;
  column_ = -1;
  // Forgotten before it is destroyed: that takes the focus from it, which is no second request to end.
  ::DestroyWindow(std::exchange(box_, nullptr));
  MSG stale;
  while (::PeekMessageW(&stale, window_, UWM_END_INPLACE_EDIT, UWM_END_INPLACE_EDIT, PM_REMOVE)) {
  }
}

void InPlaceEdit::RequestEnd(bool commit) const {
  if (box_ != nullptr) ::PostMessageW(window_, UWM_END_INPLACE_EDIT, commit ? 1 : 0, 0);
}

LRESULT CALLBACK InPlaceEdit::InPlaceEditSubclassProc(HWND box, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                                      DWORD_PTR self) noexcept {
  auto& edit = *reinterpret_cast<InPlaceEdit*>(self);
  switch (message) {
    case WM_GETDLGCODE:
      return DLGC_WANTALLKEYS;
    case WM_KEYDOWN:
      if (wParam != VK_RETURN && wParam != VK_ESCAPE) break;
      edit.RequestEnd(wParam == VK_RETURN);
      return 0;
    case WM_CHAR:
      if (wParam == L'\r' || wParam == L'\n') return 0;  // the box would beep
      break;
    case WM_KILLFOCUS:
      edit.RequestEnd(true);
      return 0;
    case WM_NCDESTROY:
      if (edit.box_ == box) edit.box_ = nullptr;  // destroyed along with the list
      ::RemoveWindowSubclass(box, &InPlaceEditSubclassProc, id);
      break;
    default:
      break;
  }
  return ::DefSubclassProc(box, message, wParam, lParam);
}
