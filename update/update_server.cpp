#include "update/update_channel.h"

std::wstring UpdateServer() { return L"" VANTORA_UPDATE_SERVER; }
