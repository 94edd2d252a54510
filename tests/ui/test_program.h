#pragma once

// A program of a test's own for the windows under test: its rules and files in a throwaway folder, an engine over a made-up
// process table, no tray window. Settings that are saved go to the registry of the test's prefix.

#include <windows.h>

#include <memory>
#include <string>

#include "core/simulated_process_table.h"
#include "platform/clock.h"
#include "platform/handles.h"
#include "ui/program.h"

inline constexpr wchar_t kMainWindowTitle[] = L"Vantora - Process Resource Monitor";

/// Deleted with the files that lie in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    wchar_t base[MAX_PATH + 1] = L"";
    ::GetTempPathW(MAX_PATH, base);
    static int count = 0;
    path_ = base + (L"vantora-test-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++count));
    ::CreateDirectoryW(path_.c_str(), nullptr);
  }
  ~TemporaryFolder() {
    WIN32_FIND_DATAW file;
    if (const UniqueFind search{::FindFirstFileW(File(L"*").c_str(), &file)}; search.get() != INVALID_HANDLE_VALUE) {
      do ::DeleteFileW(File(file.cFileName).c_str());
      while (::FindNextFileW(search.get(), &file));
    }
    ::RemoveDirectoryW(path_.c_str());
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] std::wstring File(const std::wstring& name) const { return path_ + L"\\" + name; }
  [[nodiscard]] bool Has(const std::wstring& name) const {
    return ::GetFileAttributesW(File(name).c_str()) != INVALID_FILE_ATTRIBUTES;
  }

 private:
  std::wstring path_;
};

struct TestProgram {
  TemporaryFolder folder;
  std::shared_ptr<SimulatedProcessTable> processes = std::make_shared<SimulatedProcessTable>();
  MonitorEngine engine{processes, SystemClock(), 1};
  RuleStore rules{[this] { return folder.File(L"rules.csv"); }};
  SettingsStore settings;
  RecentAlerts recentAlerts;
  UpdateState updates;
  Program program{::GetModuleHandleW(nullptr), engine, rules, settings, recentAlerts, updates};
};
