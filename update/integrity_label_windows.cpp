#include "update/integrity_label.h"

#include <aclapi.h>
#include <sddl.h>

#include "platform/handles.h"

namespace {

using UniqueLocal = Unique<HLOCAL, ::LocalFree>;

// A mandatory label (ML) that files and folders inherit (OICI): no write-up (NW), high integrity (HI).
constexpr wchar_t kHighNoWriteUp[] = L"S:(ML;OICI;NW;;;HI)";

}  // namespace

bool LabelHighIntegrity(HANDLE fileOrFolder) {
  PSECURITY_DESCRIPTOR made = nullptr;
  if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(kHighNoWriteUp, SDDL_REVISION_1, &made, nullptr)) return false;
  const UniqueLocal descriptor(made);
  BOOL present = FALSE;
  BOOL defaulted = FALSE;
  PACL label = nullptr;
  if (!::GetSecurityDescriptorSacl(made, &present, &label, &defaulted) || !present) return false;
  return ::SetSecurityInfo(fileOrFolder, SE_FILE_OBJECT, LABEL_SECURITY_INFORMATION, nullptr, nullptr, nullptr, label) ==
         ERROR_SUCCESS;
}
