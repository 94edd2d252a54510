// Takes the place of the release's server in programs that a test points at one of its own.

#include <cstdlib>

#include "update/update_channel.h"

std::wstring UpdateServer() { return ::_wgetenv(L"VANTORA_TEST_UPDATE_SERVER"); }
