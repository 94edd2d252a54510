// Stands for an installer: writes how it was started to the file that VANTORA_TEST_RECORD names, one item a line: its command
// line, its working folder, and each file beside its own.

#include <windows.h>

#include <filesystem>
#include <string>

#include "platform/text_file.h"

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
  wchar_t record[MAX_PATH] = {};
  wchar_t workingFolder[MAX_PATH] = {};
  wchar_t program[MAX_PATH] = {};
  ::GetEnvironmentVariableW(L"VANTORA_TEST_RECORD", record, MAX_PATH);
  ::GetCurrentDirectoryW(MAX_PATH, workingFolder);
  ::GetModuleFileNameW(nullptr, program, MAX_PATH);
  std::wstring text = std::wstring(::GetCommandLineW()) + L"\n" + workingFolder + L"\n";
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(program).parent_path())) {
    text += entry.path().wstring() + L"\n";
  }
  // Under its name the record is whole: a test waits for it.
  const std::wstring unfinished = std::wstring(record) + L".new";
  if (WriteTextFile(unfinished, text) != WriteResult::kWritten) return 1;
  return ::MoveFileExW(unfinished.c_str(), record, MOVEFILE_REPLACE_EXISTING) ? 0 : 1;
}
