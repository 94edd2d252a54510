#include <windows.h>

#include "platform/diagnostic_channel.h"

void WriteDiagnosticLine(const std::wstring& line) { ::OutputDebugStringW(line.c_str()); }
