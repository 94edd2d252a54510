#include "storage/data_folder.h"

#include <windows.h>

#include <shlobj.h>

std::wstring RoamingFolder() {
  wchar_t folder[MAX_PATH] = {};
  if (FAILED(::SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, folder))) return {};
  return folder;
}

std::wstring DefaultLogFilePath() {
  const std::wstring roaming = RoamingFolder();
  return roaming.empty() ? roaming : roaming + L"\\Vantora\\alerts.log";
}

std::wstring GetRulesFilePath() {
  const std::wstring roaming = RoamingFolder();
  if (roaming.empty()) return L"rules.csv";
  const std::wstring folder = roaming + L"\\Vantora";
  // A folder that exists is as good as a new one, and one that cannot be made shows when the file is opened.
  ::CreateDirectoryW(folder.c_str(), nullptr);
  return folder + L"\\rules.csv";
}
