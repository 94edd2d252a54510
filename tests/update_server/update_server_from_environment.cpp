// Takes the place of system/update_server.cpp in programs that a test points at a server of its own.

#include <windows.h>

#include "update/update_channel.h"

std::wstring UpdateServer() {
  wchar_t address[1024] = {};
  ::GetEnvironmentVariableW(L"VANTORA_TEST_UPDATE_SERVER", address, ARRAYSIZE(address));
  return address;
}
