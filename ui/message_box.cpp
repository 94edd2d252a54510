#include "ui/message_box.h"

int XMessageBox(HWND owner, const wchar_t* text, const wchar_t* caption, UINT style) {
  return ::MessageBoxW(owner, text, caption, style);
}
