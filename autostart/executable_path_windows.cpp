#include "autostart/executable_path.h"

#include <windows.h>

#include <iterator>

std::wstring OwnExecutablePath() {
  wchar_t path[260];
  const DWORD length = ::GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
  if (length == 0 || length >= std::size(path)) return {};
  return std::wstring(path, length);
}
