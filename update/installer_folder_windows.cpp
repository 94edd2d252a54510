#include "update/installer_folder.h"

#include <cwchar>
#include <vector>

#include "platform/diagnostics.h"
#include "update/integrity_label.h"

namespace {

struct Entry {
  std::wstring name;
  DWORD attributes;
};

/// The folder's entries, itself and its parent left out. False when the listing broke off.
bool ListEntries(const std::wstring& folder, std::vector<Entry>& entries) {
  WIN32_FIND_DATAW data{};
  const UniqueFind find(::FindFirstFileW((folder + L"\\*").c_str(), &data));
  if (find.get() == INVALID_HANDLE_VALUE) return false;
  do {
    const std::wstring name = data.cFileName;
    if (name != L"." && name != L"..") entries.push_back({name, data.dwFileAttributes});
  } while (::FindNextFileW(find.get(), &data));
  return ::GetLastError() == ERROR_NO_MORE_FILES;
}

/// Deletes a file, an empty folder, or a link itself, whatever the path has become since it was listed. `makeWritable`: a
/// read-only one too; not for files of strangers, which may be files of the system by another name.
void Delete(const std::wstring& path, bool makeWritable) {
  // Of a more privileged program's file only deleting may be asked: the folder's own rights grant it.
  const DWORD access = DELETE | FILE_READ_ATTRIBUTES | (makeWritable ? FILE_WRITE_ATTRIBUTES : 0);
  constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const UniqueHandle entry = OwnFileHandle(::CreateFileW(path.c_str(), access, kShare, nullptr, OPEN_EXISTING,
                                                         FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (makeWritable) {
    FILE_BASIC_INFO writable{};
    writable.FileAttributes = FILE_ATTRIBUTE_NORMAL;  // the times stay as they are
    ::SetFileInformationByHandle(entry.get(), FileBasicInfo, &writable, sizeof writable);
  }
  FILE_DISPOSITION_INFO gone{TRUE};
  ::SetFileInformationByHandle(entry.get(), FileDispositionInfo, &gone, sizeof gone);
}

bool IsPlainFolder(const std::wstring& path) {
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  return (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == FILE_ATTRIBUTE_DIRECTORY;
}

}  // namespace

InstallerFolder::~InstallerFolder() {
  if (protected_) LabelIntegrity(folder_.get(), Integrity::kMedium);
}

bool InstallerFolder::Hold(const std::wstring& path, bool protect) {
  const DWORD access = FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES | (protect ? kLabelAccess : 0);
  // The link itself is opened, not what it points to; without delete sharing nobody can put another folder in this one's place.
  UniqueHandle folder =
      OwnFileHandle(::CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (folder == nullptr || !IsPlainFolder(path)) {
    DebugLog(L"ERROR: not a plain folder: %ls", path.c_str());
    return false;
  }
  if (protect && !LabelIntegrity(folder.get(), Integrity::kHigh)) {
    DebugLog(L"ERROR: cannot protect %ls", path.c_str());
    return false;
  }
  protected_ = protect;
  path_ = path;
  folder_ = std::move(folder);
  return true;
}

void InstallerFolder::Empty() const {
  std::vector<Entry> entries;
  ListEntries(path_, entries);
  for (const Entry& entry : entries) {
    const std::wstring path = path_ + L"\\" + entry.name;
    if ((entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && !protected_) {
      // Held while it is emptied, as this folder is: it cannot turn into a link to somewhere else meanwhile.
      InstallerFolder inner;
      if (inner.Hold(path, false)) inner.Empty();
    }
    Delete(path, !protected_ && (entry.attributes & FILE_ATTRIBUTE_READONLY) != 0);
  }
}

bool InstallerFolder::HoldsOnly(const std::wstring& fileName) const {
  // An empty folder can be turned into a link while it is held, so its kind is looked at again; one that holds the file cannot.
  std::vector<Entry> entries;
  return IsPlainFolder(path_) && ListEntries(path_, entries) && entries.size() == 1 &&
         _wcsicmp(entries[0].name.c_str(), fileName.c_str()) == 0;
}
