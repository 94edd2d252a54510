#pragma once

// The update server that with_update_server has started, as a test uses it: its certificate is trusted, and the temporary folder
// of the test and of the programs it starts is a throwaway one.

#include <windows.h>

#include <wincrypt.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/file.h"

class TestServer {
 public:
  TestServer() {
    const std::string certificate = ReadWholeFile(Path(L"https.cer")).value_or("");
    ::CertAddEncodedCertificateToStore(roots_, X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(certificate.data()),
                                       static_cast<DWORD>(certificate.size()), CERT_STORE_ADD_REPLACE_EXISTING, &trusted_);
    ::CertControlStore(roots_, 0, CERT_STORE_CTRL_COMMIT, nullptr);
    std::filesystem::remove_all(Temp());
    std::filesystem::create_directory(Temp());
    UseTemp(Temp());
    UseServer(L"VANTORA_TEST_HTTPS");
    Use("good");
    ::DeleteFileW(Path(L"requests").c_str());
  }
  ~TestServer() {
    if (trusted_ != nullptr) ::CertDeleteCertificateFromStore(trusted_);
    ::CertCloseStore(roots_, 0);
  }
  TestServer(const TestServer&) = delete;

  /// From now on the server answers as in this scenario.
  static void Use(const std::string& scenario) { (void)WriteWholeFile(Path(L"scenario"), scenario); }
  /// From now on this process, and those that it starts, ask the server that with_update_server has put into the variable.
  static void UseServer(const wchar_t* variable) { ::_wputenv_s(L"VANTORA_TEST_UPDATE_SERVER", ::_wgetenv(variable)); }
  static void UseTemp(const std::wstring& folder) {
    for (const wchar_t* name : {L"TMP", L"TEMP"}) ::SetEnvironmentVariableW(name, folder.c_str());
  }

  /// One line for each request so far.
  static std::string Requests() { return ReadWholeFile(Path(L"requests")).value_or(""); }
  /// A file or folder of the server's, named as Windows programs name it.
  static std::wstring Path(const std::wstring& name) {
    const std::filesystem::path folder = L"Z:" + std::wstring(::_wgetenv(L"VANTORA_TEST_SERVER_FOLDER"));
    return (folder / name).make_preferred().wstring();
  }
  static std::wstring Temp() { return Path(L"temp"); }
  /// The folder and the file that an installer is downloaded to.
  static std::wstring Folder() { return Temp() + L"\\Vantora"; }
  static std::wstring File() { return Folder() + L"\\vantorasetup.exe"; }

 private:
  const HCERTSTORE roots_ = ::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root");
  PCCERT_CONTEXT trusted_ = nullptr;
};
