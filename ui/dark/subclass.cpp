#include "ui/dark/subclass.h"

namespace {

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id, DWORD_PTR reference) noexcept {
  auto* subclass = reinterpret_cast<Subclass*>(reference);
  const std::optional<LRESULT> answer = subclass->OnMessage(window, message, wParam, lParam);
  if (message == WM_DESTROY) {
    ::RemoveWindowSubclass(window, &Procedure, id);
    std::unique_ptr<Subclass>(subclass).reset();
  }
  return answer ? *answer : ::DefSubclassProc(window, message, wParam, lParam);
}

}  // namespace

bool InstallSubclass(HWND window, UINT_PTR id, std::unique_ptr<Subclass> subclass) {
  if (!::SetWindowSubclass(window, &Procedure, id, reinterpret_cast<DWORD_PTR>(subclass.get()))) return false;
  (void)subclass.release();  // the procedure's from now on
  return true;
}
