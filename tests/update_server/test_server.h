#pragma once

// The update server that with_update_server has started, as a test uses it: its certificate authority is trusted, and the
// temporary folder of the test and of the programs it starts is a throwaway one.

#include <windows.h>

#include <wincrypt.h>

#include <string>
#include <vector>

#include "platform/handles.h"

class TestServer {
 public:
  TestServer();
  ~TestServer();
  TestServer(const TestServer&) = delete;
  TestServer& operator=(const TestServer&) = delete;

  /// From now on the server answers as in this scenario.
  static void Use(const std::string& scenario);
  /// From now on this process, and those that it starts, ask the server that with_update_server has put into the variable.
  static void UseServer(const wchar_t* variable);
  static void UseTemp(const std::wstring& folder);

  /// One line for each request so far.
  [[nodiscard]] static std::string Requests();
  /// A file or folder of the server's, named as Windows programs name it.
  [[nodiscard]] static std::wstring Path(const std::wstring& name);

  /// The folder and the file that an installer is downloaded to.
  [[nodiscard]] std::wstring Folder() const { return temp_ + L"\\Vantora"; }
  [[nodiscard]] std::wstring File() const { return Folder() + L"\\vantorasetup.exe"; }
  [[nodiscard]] const std::wstring& Temp() const { return temp_; }

  /// What the fake installer has written about its start; waits for it.
  [[nodiscard]] std::wstring LaunchRecord() const;
  /// What it writes when it was started silently, from a system folder, with nothing beside it.
  [[nodiscard]] std::wstring ProperLaunch() const;
  [[nodiscard]] bool WasLaunched() const;

 private:
  const HCERTSTORE roots_;
  PCCERT_CONTEXT trusted_ = nullptr;
  const std::wstring temp_;
  const std::wstring record_ = temp_ + L"\\record";
};
