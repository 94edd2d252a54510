#include "ui/framework/file_choosers.h"

#include <cderr.h>
#include <commdlg.h>
#include <shlobj.h>

#include <iterator>

#include "storage/settings.h"
#include "ui/framework/resources.h"

namespace {

struct Chooser {
  BOOL(WINAPI* show)(OPENFILENAMEW* request);
  const wchar_t* title;  ///< null: the system's
  const wchar_t* defaultExtension;
  DWORD flags;
};

constexpr DWORD kPathFieldFlags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_ENABLESIZING | OFN_PATHMUSTEXIST;
const Chooser kLogChooser = {::GetSaveFileNameW, L"Choose the alert log", L"log", kPathFieldFlags};
const Chooser kSoundChooser = {::GetOpenFileNameW, L"Choose the alert sound", L"wav", kPathFieldFlags | OFN_FILEMUSTEXIST};

/// `path`: what to start with, and what was chosen; as it was when nothing was. `folder`: where to start without a path; empty:
/// the system's choice.
bool Choose(const Chooser& chooser, HWND owner, const wchar_t* filter, const std::wstring& folder, std::wstring& path) {
  wchar_t buffer[kMaxPathChars + 1] = {};
  path.copy(buffer, kMaxPathChars);
  OPENFILENAMEW request{};
  request.lStructSize = sizeof request;
  request.hwndOwner = owner;
  request.lpstrFilter = filter;
  request.lpstrFile = buffer;
  request.nMaxFile = static_cast<DWORD>(std::size(buffer));
  request.lpstrDefExt = chooser.defaultExtension;
  request.lpstrTitle = chooser.title;
  if (path.empty() && !folder.empty()) request.lpstrInitialDir = folder.c_str();
  // Without it, choosing a file would move the whole program's current directory.
  request.Flags = chooser.flags | OFN_NOCHANGEDIR;
  if (!chooser.show(&request)) {
    // What was typed may be no file name at all; then the chooser starts without one.
    if (::CommDlgExtendedError() != FNERR_INVALIDFILENAME) return false;
    buffer[0] = L'\0';
    if (!chooser.show(&request)) return false;
  }
  path = buffer;
  return true;
}

std::wstring DocumentsFolder() {
  wchar_t folder[MAX_PATH] = L"";
  if (FAILED(::SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, folder))) return {};
  return folder;
}

/// The system's own sounds.
std::wstring MediaFolder() {
  wchar_t folder[MAX_PATH] = {};
  const UINT length = ::GetWindowsDirectoryW(folder, MAX_PATH);
  return std::wstring(folder, length) + L"\\Media";
}

}  // namespace

std::wstring AskSavePath(HWND owner, UINT filterStringId, const wchar_t* defaultExtension) {
  std::wstring path;
  const Chooser chooser = {::GetSaveFileNameW, nullptr, defaultExtension, OFN_OVERWRITEPROMPT};
  (void)Choose(chooser, owner, LoadFilterString(filterStringId).c_str(), {}, path);
  return path;
}

std::wstring AskOpenPath(HWND owner, UINT filterStringId) {
  std::wstring path;
  const Chooser chooser = {::GetOpenFileNameW, nullptr, nullptr, OFN_FILEMUSTEXIST};
  (void)Choose(chooser, owner, LoadFilterString(filterStringId).c_str(), DocumentsFolder(), path);
  return path;
}

bool ChooseLogFilePath(HWND owner, std::wstring& path) {
  return Choose(kLogChooser, owner, L"Alert log (*.log)\0*.log\0All files\0*.*\0", {}, path);
}

bool ChooseSoundFilePath(HWND owner, std::wstring& path) {
  return Choose(kSoundChooser, owner, L"Sounds (*.wav)\0*.wav\0All files\0*.*\0", MediaFolder(), path);
}
