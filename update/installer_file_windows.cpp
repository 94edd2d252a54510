#include "update/installer_file.h"

#include <cstring>
#include <limits>
#include <vector>

#include "update/integrity_label.h"

namespace {

constexpr std::size_t kCompareBytes = 65'536;

bool WriteInOneCall(HANDLE file, std::string_view bytes, InstallerFile::WriteCall write) {
  if (bytes.size() > std::numeric_limits<DWORD>::max()) return false;
  DWORD written = 0;
  return write(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) && written == bytes.size();
}

}  // namespace

InstallerFile::~InstallerFile() {
  held_.reset();
  if (kept_ || ::DeleteFileW(path_.c_str()) || !protected_) return;
  // Somebody holds it open. An ordinary program must be able to write over it later.
  const UniqueHandle left =
      OwnFileHandle(::CreateFileW(path_.c_str(), kLabelAccess, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (left != nullptr) LabelIntegrity(left.get(), Integrity::kMedium);
}

InstallerFileResult InstallerFile::Create(std::string_view bytes, bool protect, WriteCall write) {
  const DWORD labelAccess = protect ? kLabelAccess : 0;
  UniqueHandle created = OwnFileHandle(::CreateFileW(path_.c_str(), GENERIC_WRITE | labelAccess, 0, nullptr,
                                                     protect ? CREATE_NEW : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (created == nullptr) return InstallerFileResult::kCannotCreate;
  if (protect && !LabelIntegrity(created.get(), Integrity::kHigh)) return InstallerFileResult::kCannotCreate;
  protected_ = protect;
  if (!WriteInOneCall(created.get(), bytes, write)) return InstallerFileResult::kCannotWrite;
  created.reset();
  // Between the two handles the file is anybody's, so what is held now is compared with what was downloaded. A handle that can
  // write could not be kept: the system refuses to start a file that is open for writing.
  held_ = OwnFileHandle(::CreateFileW(path_.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  return held_ != nullptr && HoldsExactly(bytes) ? InstallerFileResult::kReady : InstallerFileResult::kChanged;
}

bool InstallerFile::HoldsExactly(std::string_view bytes) const {
  BY_HANDLE_FILE_INFORMATION information{};
  if (!::GetFileInformationByHandle(held_.get(), &information)) return false;
  if ((information.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return false;
  std::vector<char> buffer(kCompareBytes);
  for (;;) {
    DWORD count = 0;
    if (!::ReadFile(held_.get(), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr)) return false;
    if (count == 0) return bytes.empty();
    if (count > bytes.size() || std::memcmp(buffer.data(), bytes.data(), count) != 0) return false;
    bytes.remove_prefix(count);
  }
}
