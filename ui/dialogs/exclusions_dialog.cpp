#include "ui/dialogs/exclusions_dialog.h"

#include "res/resource.h"
#include "storage/settings_registry.h"
#include "ui/dialogs/exclusions_text.h"
#include "ui/framework/clipboard_text.h"
#include "ui/framework/dialog.h"
#include "ui/program.h"

namespace {

constexpr int kDarkControls[] = {IDC_EXCLUSIONS, IDOK, IDCANCEL};
constexpr UINT_PTR kPasteSubclassId = 1;

/// Pastes with the line ends that the edit box knows. By itself it takes the others for part of a line: a list from elsewhere
/// would stand there as one line, and one of a megabyte takes minutes to lay out.
LRESULT CALLBACK PasteProcedure(HWND edit, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id, DWORD_PTR) {
  if (message == WM_PASTE) {
    if (const std::optional<std::wstring> text = ReadClipboardText(edit)) {
      ::SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(WithEditLineEnds(*text).c_str()));
      return 0;
    }
  }
  if (message == WM_NCDESTROY) ::RemoveWindowSubclass(edit, &PasteProcedure, id);
  return ::DefSubclassProc(edit, message, wParam, lParam);
}

class ExclusionsDialog final : public Dialog {
 public:
  explicit ExclusionsDialog(Program& program) : Dialog(program.instance, IDD_EXCLUSIONS), program_(program) {}

 private:
  bool OnInitDialog() override;
  bool OnCommand(WORD id, WORD notification) override;
  void Store();

  Program& program_;
};

bool ExclusionsDialog::OnInitDialog() {
  ApplyDarkMode(kDarkControls);
  if (HWND edit = Item(IDC_EXCLUSIONS)) {
    // By itself an edit box stops taking text at 30,000 characters, and cuts a longer text that is pasted; 0 lifts that.
    ::SendMessageW(edit, EM_SETLIMITTEXT, 0, 0);
    ::SetWindowSubclass(edit, &PasteProcedure, kPasteSubclassId, 0);
    const std::wstring text = JoinExclusions(*program_.engine.Exclusions());
    SetItemText(IDC_EXCLUSIONS, text);
    // The dialog selects the whole text with the first focus, so that the first key typed would erase the list: the caret goes to
    // its end instead, once the focus is there.
    ::PostMessageW(edit, EM_SETSEL, text.size(), static_cast<LPARAM>(text.size()));
  }
  return true;
}

bool ExclusionsDialog::OnCommand(WORD id, WORD notification) {
  if (id == IDOK) Store();
  return Dialog::OnCommand(id, notification);
}

void ExclusionsDialog::Store() {
  const int length = ::GetWindowTextLengthW(Item(IDC_EXCLUSIONS));
  const std::wstring text = ItemText(IDC_EXCLUSIONS, static_cast<std::size_t>(length));
  program_.engine.SetExclusions(SplitExclusions(text));
  SaveSettings(program_.settings, program_.engine);
}

}  // namespace

void RunExclusionsDialog(HWND owner, Program& program) { ExclusionsDialog(program).RunModal(owner); }
