#include "system/update_config.h"

std::wstring UpdateServer() { return L"" VANTORA_UPDATE_SERVER; }
