#include "ui/framework/path_chooser.h"

#include <cderr.h>
#include <commdlg.h>

#include <iterator>

#include "storage/settings.h"

namespace {

struct Chooser {
  BOOL(WINAPI* show)(OPENFILENAMEW* request);
  const wchar_t* title;
  const wchar_t* filter;
  const wchar_t* defaultExtension;
  DWORD flags;
  std::wstring (*startFolder)();  ///< where to start without a path; empty: the system's choice
};

/// The system's own sounds.
std::wstring MediaFolder() {
  wchar_t folder[MAX_PATH] = {};
  const UINT length = ::GetWindowsDirectoryW(folder, MAX_PATH);
  return std::wstring(folder, length) + L"\\Media";
}

std::wstring NoFolder() { return {}; }

const Chooser kLogChooser = {::GetSaveFileNameW,
                             L"Choose the alert log",
                             L"Alert log (*.log)\0*.log\0All files\0*.*\0",
                             L"log",
                             OFN_PATHMUSTEXIST,
                             NoFolder};
const Chooser kSoundChooser = {::GetOpenFileNameW,
                               L"Choose the alert sound",
                               L"Sounds (*.wav)\0*.wav\0All files\0*.*\0",
                               L"wav",
                               OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST,
                               MediaFolder};

bool Choose(const Chooser& chooser, HWND owner, std::wstring& path) {
  wchar_t buffer[kMaxPathChars + 1] = {};
  path.copy(buffer, kMaxPathChars);
  OPENFILENAMEW request{};
  request.lStructSize = sizeof request;
  request.hwndOwner = owner;
  request.lpstrFilter = chooser.filter;
  request.lpstrFile = buffer;
  request.nMaxFile = static_cast<DWORD>(std::size(buffer));
  request.lpstrDefExt = chooser.defaultExtension;
  request.lpstrTitle = chooser.title;
  // A path in the field says by itself where to start.
  const std::wstring folder = path.empty() ? chooser.startFolder() : std::wstring();
  if (!folder.empty()) request.lpstrInitialDir = folder.c_str();
  // Without the last flag, choosing a file would move the whole program's current directory.
  request.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_ENABLESIZING | chooser.flags | OFN_NOCHANGEDIR;
  if (!chooser.show(&request)) {
    // What was typed may be no file name at all; then the chooser starts without one.
    if (::CommDlgExtendedError() != FNERR_INVALIDFILENAME) return false;
    buffer[0] = L'\0';
    if (!chooser.show(&request)) return false;
  }
  path = buffer;
  return true;
}

}  // namespace

bool ChooseLogFilePath(HWND owner, std::wstring& path) { return Choose(kLogChooser, owner, path); }
bool ChooseSoundFilePath(HWND owner, std::wstring& path) { return Choose(kSoundChooser, owner, path); }
