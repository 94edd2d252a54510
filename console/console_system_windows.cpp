#include "console/console_system.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "platform/text_encoding.h"
#include "storage/data_folder.h"

namespace {

/// Set by the system's own thread, for which there is no other way to a place of ours.
HANDLE endEvent = nullptr;

BOOL WINAPI OnControl(DWORD) noexcept {
  ::SetEvent(endEvent);
  return TRUE;
}

}  // namespace

struct EndRequest::Impl {};

std::wstring UserRulesFile() {
  const std::wstring folder = RoamingFolder();
  return folder.empty() ? folder : folder + L"\\Vantora\\rules.csv";
}

std::string HostName() {
  wchar_t name[256] = {};
  DWORD size = 256;
  ::GetComputerNameExW(ComputerNameDnsHostname, name, &size);
  return EncodeUtf8(name);
}

bool IsTerminal() {
  HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  constexpr DWORD kEscapeSequences = 4;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING
  return ::GetConsoleMode(output, &mode) != FALSE && ::SetConsoleMode(output, mode | kEscapeSequences) != FALSE;
}

bool RenameOver(const std::wstring& from, const std::wstring& to) {
  return ::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE;
}

void PrepareOutput() {
  ::SetConsoleOutputCP(CP_UTF8);
  ::_setmode(::_fileno(stdout), _O_BINARY);
}

EndRequest::EndRequest() {
  endEvent = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  ::SetConsoleCtrlHandler(OnControl, TRUE);
}
// The handler may still run: the event stays until the process ends.
EndRequest::~EndRequest() { ::SetConsoleCtrlHandler(OnControl, FALSE); }

bool EndRequest::Wait(std::uint32_t timeoutMs) { return ::WaitForSingleObject(endEvent, timeoutMs) == WAIT_OBJECT_0; }
