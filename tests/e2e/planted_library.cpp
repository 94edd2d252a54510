// A stranger's library that the program must not load: it ends the process that does.

#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE, DWORD, void*);
BOOL WINAPI DllMain(HINSTANCE, DWORD, void*) {
  ::ExitProcess(77);
  return TRUE;
}
