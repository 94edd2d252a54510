#pragma once

// The update server that with_update_server has started, as a test uses it: its certificate authority is trusted, and the
// temporary folder of the test and of the programs it starts is a throwaway one.

#include <windows.h>

#include <wincrypt.h>

#include <algorithm>
#include <string>

#include "platform/file.h"
#include "platform/text_file.h"
#include "tests/support/wait.h"

class TestServer {
 public:
  TestServer() {
    const std::string certificate = ReadWholeFile(Path(L"ca.cer")).value_or("");
    ::CertAddEncodedCertificateToStore(roots_, X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(certificate.data()),
                                       static_cast<DWORD>(certificate.size()), CERT_STORE_ADD_REPLACE_EXISTING, &trusted_);
    ::CertControlStore(roots_, 0, CERT_STORE_CTRL_COMMIT, nullptr);
    ::CreateDirectoryW(temp_.c_str(), nullptr);
    UseTemp(temp_);
    UseServer(L"VANTORA_TEST_HTTPS");
    Use("good");
    ::SetEnvironmentVariableW(L"VANTORA_TEST_RECORD", record_.c_str());
    ::DeleteFileW(Path(L"requests").c_str());
  }
  ~TestServer() {
    if (trusted_ != nullptr) ::CertDeleteCertificateFromStore(trusted_);
    ::CertCloseStore(roots_, 0);
  }
  TestServer(const TestServer&) = delete;
  TestServer& operator=(const TestServer&) = delete;

  /// From now on the server answers as in this scenario.
  static void Use(const std::string& scenario) { (void)WriteWholeFile(Path(L"scenario"), scenario); }
  /// From now on this process, and those that it starts, ask the server that with_update_server has put into the variable.
  static void UseServer(const wchar_t* variable) {
    ::SetEnvironmentVariableW(L"VANTORA_TEST_UPDATE_SERVER", EnvironmentText(variable).c_str());
  }
  static void UseTemp(const std::wstring& folder) {
    for (const wchar_t* name : {L"TMP", L"TEMP"}) ::SetEnvironmentVariableW(name, folder.c_str());
  }

  /// One line for each request so far.
  [[nodiscard]] static std::string Requests() { return ReadWholeFile(Path(L"requests")).value_or(""); }
  /// A file or folder of the server's, named as Windows programs name it.
  [[nodiscard]] static std::wstring Path(const std::wstring& name) {
    std::wstring path = L"Z:" + EnvironmentText(L"VANTORA_TEST_SERVER_FOLDER") + L"/" + name;
    std::replace(path.begin(), path.end(), L'/', L'\\');
    return path;
  }

  /// The folder and the file that an installer is downloaded to.
  [[nodiscard]] std::wstring Folder() const { return temp_ + L"\\Vantora"; }
  [[nodiscard]] std::wstring File() const { return Folder() + L"\\vantorasetup.exe"; }
  [[nodiscard]] const std::wstring& Temp() const { return temp_; }

  /// What the fake installer has written about its start; waits for it.
  [[nodiscard]] std::wstring LaunchRecord() const {
    return e2e::WaitForResult([this] { return ReadTextFile(record_); }).value_or(L"");
  }
  /// What it writes when it was started silently, from a system folder, with nothing beside it.
  [[nodiscard]] std::wstring ProperLaunch() const { return L"\"" + File() + L"\" /S\nC:\\windows\\system32\n" + File() + L"\n"; }

 private:
  static std::wstring EnvironmentText(const wchar_t* name) {
    wchar_t text[1024] = {};
    ::GetEnvironmentVariableW(name, text, ARRAYSIZE(text));
    return text;
  }

  const HCERTSTORE roots_ = ::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root");
  PCCERT_CONTEXT trusted_ = nullptr;
  const std::wstring temp_ =
      Path(L"temp-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(::GetTickCount64()));
  const std::wstring record_ = temp_ + L"\\record";
};
