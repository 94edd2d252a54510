// Stands for an installer: tells the system's debugger how it was started.

#include <windows.h>

#include <string>

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
  wchar_t folder[MAX_PATH] = {};
  ::GetCurrentDirectoryW(MAX_PATH, folder);
  ::OutputDebugStringW((::GetCommandLineW() + (L" in " + std::wstring(folder))).c_str());
  return 0;
}
