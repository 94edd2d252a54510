#include "update/integrity_label.h"

#include <aclapi.h>
#include <sddl.h>

#include "platform/handles.h"

namespace {

using UniqueLocal = Unique<HLOCAL, ::LocalFree>;

// Mandatory labels (ML) that files and folders inherit (OICI): no write-up (NW), high (HI) and medium (ME) integrity.
constexpr wchar_t kHighNoWriteUp[] = L"S:(ML;OICI;NW;;;HI)";
constexpr wchar_t kMediumNoWriteUp[] = L"S:(ML;OICI;NW;;;ME)";

}  // namespace

bool LabelIntegrity(HANDLE fileOrFolder, Integrity integrity) {
  const wchar_t* const text = integrity == Integrity::kHigh ? kHighNoWriteUp : kMediumNoWriteUp;
  PSECURITY_DESCRIPTOR made = nullptr;
  if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(text, SDDL_REVISION_1, &made, nullptr)) return false;
  const UniqueLocal descriptor(made);
  BOOL present = FALSE;
  BOOL defaulted = FALSE;
  PACL label = nullptr;
  if (!::GetSecurityDescriptorSacl(made, &present, &label, &defaulted) || !present) return false;
  return ::SetSecurityInfo(fileOrFolder, SE_FILE_OBJECT, LABEL_SECURITY_INFORMATION, nullptr, nullptr, nullptr, label) ==
         ERROR_SUCCESS;
}
