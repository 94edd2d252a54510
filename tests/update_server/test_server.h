#pragma once

// The update server that with_update_server has started, as a test uses it: its certificate authority is trusted, the temporary
// folder is a throwaway one, and the programs that the test starts ask the scenario that it names.

#include <windows.h>

#include <string>
#include <vector>

class TestServer {
 public:
  TestServer();
  ~TestServer();
  TestServer(const TestServer&) = delete;
  TestServer& operator=(const TestServer&) = delete;

  [[nodiscard]] bool IsTrusted() const { return trusted_; }
  /// From now on updates come from this scenario of the server that with_update_server has put into the variable.
  static void Use(const std::wstring& scenario, const wchar_t* variable = L"VANTORA_TEST_HTTPS");
  static void UseTemp(const std::wstring& folder);

  /// One line for each request so far.
  [[nodiscard]] static std::string Requests();
  /// A file or folder of the server's, named as Windows programs name it.
  [[nodiscard]] static std::wstring Path(const std::wstring& name);

  /// The folder and the file that an installer is downloaded to.
  [[nodiscard]] std::wstring Folder() const { return temp_ + L"\\Vantora"; }
  [[nodiscard]] std::wstring File() const { return Folder() + L"\\vantorasetup.exe"; }
  [[nodiscard]] const std::wstring& Temp() const { return temp_; }

  [[nodiscard]] bool WasLaunched() const;
  /// What the installer has written about its start, line by line; waits for it.
  [[nodiscard]] std::vector<std::wstring> LaunchRecord() const;

 private:
  std::string certificate_;
  bool trusted_ = false;
  std::wstring temp_;
  std::wstring record_;
};

[[nodiscard]] bool Exists(const std::wstring& path);
