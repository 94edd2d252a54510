#include "update/installer_signature.h"

#include <softpub.h>
#include <wintrust.h>

LONG VerifyInstallerSignature(const std::wstring& path) {
  WINTRUST_FILE_INFO file{};
  file.cbStruct = sizeof file;
  file.pcwszFilePath = path.c_str();

  WINTRUST_DATA data{};
  data.cbStruct = sizeof data;
  data.dwUIChoice = WTD_UI_NONE;
  data.fdwRevocationChecks = WTD_REVOKE_WHOLECHAIN;
  data.dwUnionChoice = WTD_CHOICE_FILE;
  data.pFile = &file;
  data.dwStateAction = WTD_STATEACTION_VERIFY;
  data.dwProvFlags = WTD_SAFER_FLAG;

  GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
  const LONG verdict = ::WinVerifyTrust(nullptr, &action, &data);
  data.dwStateAction = WTD_STATEACTION_CLOSE;
  ::WinVerifyTrust(nullptr, &action, &data);
  return verdict;
}
