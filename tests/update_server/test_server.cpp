#include "test_server.h"

#include <algorithm>

#include "platform/file.h"
#include "platform/text_file.h"

namespace {

constexpr int kLaunchTimeoutMs = 20'000;

std::wstring EnvironmentText(const wchar_t* name) {
  wchar_t text[1024] = {};
  ::GetEnvironmentVariableW(name, text, ARRAYSIZE(text));
  return text;
}

}  // namespace

TestServer::TestServer()
    : roots_(::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root")),
      temp_(Path(L"temp-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(::GetTickCount64()))) {
  const std::string certificate = ReadWholeFile(Path(L"ca.cer")).value_or("");
  ::CertAddEncodedCertificateToStore(roots_, X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(certificate.data()),
                                     static_cast<DWORD>(certificate.size()), CERT_STORE_ADD_REPLACE_EXISTING, &trusted_);
  ::CertControlStore(roots_, 0, CERT_STORE_CTRL_COMMIT, nullptr);
  ::CreateDirectoryW(temp_.c_str(), nullptr);
  UseTemp(temp_);
  UseServer(L"VANTORA_TEST_HTTPS");
  Use("good");
  ::SetEnvironmentVariableW(L"VANTORA_TEST_RECORD", record_.c_str());
  ::SetEnvironmentVariableW(L"VANTORA_TEST_NOBODY", L"https://localhost:1");
  ::DeleteFileW(Path(L"requests").c_str());
}

TestServer::~TestServer() {
  if (trusted_ != nullptr) ::CertDeleteCertificateFromStore(trusted_);
  ::CertCloseStore(roots_, 0);
}

void TestServer::Use(const std::string& scenario) { (void)WriteWholeFile(Path(L"scenario"), scenario); }

void TestServer::UseServer(const wchar_t* variable) {
  ::SetEnvironmentVariableW(L"VANTORA_TEST_UPDATE_SERVER", EnvironmentText(variable).c_str());
}

void TestServer::UseTemp(const std::wstring& folder) {
  ::SetEnvironmentVariableW(L"TMP", folder.c_str());
  ::SetEnvironmentVariableW(L"TEMP", folder.c_str());
}

std::string TestServer::Requests() { return ReadWholeFile(Path(L"requests")).value_or(""); }

std::wstring TestServer::Path(const std::wstring& name) {
  std::wstring path = L"Z:" + EnvironmentText(L"VANTORA_TEST_SERVER_FOLDER") + L"/" + name;
  std::replace(path.begin(), path.end(), L'/', L'\\');
  return path;
}

std::wstring TestServer::LaunchRecord() const {
  // Seen is not yet readable: whoever moves the file to its name may still hold it.
  auto text = ReadTextFile(record_);
  for (int waitedMs = 0; !text && waitedMs < kLaunchTimeoutMs; waitedMs += 50) {
    ::Sleep(50);
    text = ReadTextFile(record_);
  }
  return text.value_or(L"");
}

std::wstring TestServer::ProperLaunch() const {
  return L"\"" + File() + L"\" /S\nC:\\windows\\system32\n" + File() + L"\nvantorasetup.exe\n";
}

bool TestServer::WasLaunched() const { return ReadTextFile(record_).has_value(); }
