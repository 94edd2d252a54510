#include "update/installer_start.h"

#include <shellapi.h>
#include <softpub.h>
#include <wintrust.h>

#include "platform/handles.h"

namespace {

// The system's folder: nobody else's libraries are loaded from there.
std::wstring SystemFolder() {
  wchar_t folder[MAX_PATH] = {};
  ::GetSystemDirectoryW(folder, MAX_PATH);
  return folder;
}

/// As a double click would, by what the user has registered for programs.
LaunchResult LaunchByShell(const std::wstring& path) {
  const std::wstring folder = SystemFolder();
  SHELLEXECUTEINFOW request{};
  request.cbSize = sizeof request;
  // The calling thread may end at once and has no message loop, so the call is to be complete when it returns; a failure is
  // reported by the caller's own message, not by the system's.
  request.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
  request.lpVerb = L"open";
  request.lpFile = path.c_str();
  request.lpParameters = L"/S";
  request.lpDirectory = folder.c_str();
  request.nShow = SW_SHOWNORMAL;

  LaunchResult result;
  result.accepted = ::ShellExecuteExW(&request) != FALSE;
  const UniqueHandle process(request.hProcess);
  result.hasProcess = process != nullptr;
  return result;
}

/// The file itself: the user's registrations, which any program of the user can write, have no say.
LaunchResult LaunchDirectly(const std::wstring& path) {
  std::wstring commandLine = L"\"" + path + L"\" /S";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started{};
  const bool launched = ::CreateProcessW(path.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                         SystemFolder().c_str(), &startup, &started) != FALSE;
  const UniqueHandle process(started.hProcess);
  const UniqueHandle thread(started.hThread);
  return {launched, launched};
}

}  // namespace

LaunchResult LaunchInstaller(const std::wstring& path, bool elevated) {
  return elevated ? LaunchDirectly(path) : LaunchByShell(path);
}

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
