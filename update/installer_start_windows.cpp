#include <windows.h>

#include <shellapi.h>

#include "platform/handles.h"
#include "update/installer_start.h"

LaunchResult LaunchInstaller(const std::wstring& path) {
  wchar_t systemFolder[MAX_PATH] = {};
  ::GetSystemDirectoryW(systemFolder, MAX_PATH);

  SHELLEXECUTEINFOW request{};
  request.cbSize = sizeof request;
  // The calling thread may end at once and has no message loop, so the call is to be complete when it returns; a failure is
  // reported by the caller's own message, not by the system's.
  request.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
  request.lpVerb = L"open";
  request.lpFile = path.c_str();
  request.lpParameters = L"/S";
  request.lpDirectory = systemFolder;
  request.nShow = SW_SHOWNORMAL;

  LaunchResult result;
  result.accepted = ::ShellExecuteExW(&request) != FALSE;
  const UniqueHandle process(request.hProcess);
  result.hasProcess = process != nullptr;
  return result;
}
