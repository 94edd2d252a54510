#include "ui/rules/rule_exchange_commands.h"

#include <optional>
#include <string>
#include <string_view>

#include "res/resource.h"
#include "storage/rule_store.h"
#include "ui/framework/clipboard_text.h"
#include "ui/framework/file_choosers.h"
#include "ui/framework/resources.h"
#include "ui/message_box/message_box.h"

namespace {

int ShowMessage(HWND owner, UINT textId, UINT titleId, UINT style) {
  return XMessageBox(owner, LoadResString(textId).c_str(), LoadResString(titleId).c_str(), style);
}

bool LooksLikeExportedRules(std::wstring_view text) {
  return text.find(L"\"rules\"") != std::wstring_view::npos && text.find(L"\"processPattern\"") != std::wstring_view::npos;
}

bool ReportImport(HWND owner, bool imported) {
  if (!imported) ShowMessage(owner, IDS_IMPORT_FAILED, IDS_APP_TITLE, MB_OK | MB_ICONERROR);
  return imported;
}

bool ImportFromFile(HWND owner, RuleStore& rules) {
  const std::wstring path = AskOpenPath(owner, IDS_JSON_FILTER);
  return !path.empty() && ReportImport(owner, rules.ImportJson(path));
}

}  // namespace

bool RunImportRulesCommand(HWND owner, RuleStore& rules) {
  const std::optional<std::wstring> text = ReadClipboardText(owner);
  if (text && LooksLikeExportedRules(*text)) {
    const int answer = ShowMessage(owner, IDS_ASK_CLIPBOARD_IMPORT, IDS_IMPORT_TITLE, MB_YESNOCANCEL | MB_ICONQUESTION);
    if (answer == IDYES) return ReportImport(owner, rules.ImportJsonString(*text));
    if (answer != IDNO) return false;
  }
  return ImportFromFile(owner, rules);
}

void RunExportRulesCommand(HWND owner, const RuleStore& rules) {
  const std::wstring path = AskSavePath(owner, IDS_JSON_FILTER, L"json");
  if (path.empty()) return;
  const bool exported = rules.ExportJson(path);
  ShowMessage(owner, exported ? IDS_EXPORT_OK : IDS_EXPORT_FAILED, IDS_APP_TITLE,
              exported ? MB_OK | MB_ICONINFORMATION : MB_OK | MB_ICONERROR);
}
