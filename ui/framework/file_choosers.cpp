#include "ui/framework/file_choosers.h"

#include <commdlg.h>

#include "ui/framework/resources.h"

namespace {

using FileDialogCall = BOOL(WINAPI*)(OPENFILENAMEW*);

std::wstring Ask(FileDialogCall call, OPENFILENAMEW& request, HWND owner, UINT filterStringId) {
  wchar_t path[MAX_PATH] = L"";
  const std::wstring filter = LoadFilterString(filterStringId);
  request.lStructSize = sizeof request;
  request.hwndOwner = owner;
  request.lpstrFilter = filter.c_str();
  request.lpstrFile = path;
  request.nMaxFile = MAX_PATH;
  request.Flags |= OFN_NOCHANGEDIR;
  return call(&request) ? std::wstring(path) : std::wstring();
}

}  // namespace

std::wstring AskSavePath(HWND owner, UINT filterStringId, const wchar_t* defaultExtension) {
  OPENFILENAMEW request{};
  request.Flags = OFN_OVERWRITEPROMPT;
  request.lpstrDefExt = defaultExtension;
  return Ask(&::GetSaveFileNameW, request, owner, filterStringId);
}

std::wstring AskOpenPath(HWND owner, UINT filterStringId, const wchar_t* initialFolder) {
  OPENFILENAMEW request{};
  request.Flags = OFN_FILEMUSTEXIST;
  request.lpstrInitialDir = initialFolder;
  return Ask(&::GetOpenFileNameW, request, owner, filterStringId);
}
