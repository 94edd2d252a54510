#include "test_server.h"

#include <wincrypt.h>

#include "platform/file.h"
#include "platform/handles.h"
#include "platform/text_file.h"

namespace {

constexpr int kLaunchTimeoutMs = 20'000;

void CloseStore(HCERTSTORE store) { ::CertCloseStore(store, 0); }
using UniqueStore = Unique<HCERTSTORE, CloseStore>;

/// The current user's trusted authorities. A change is there for others once the store is closed.
UniqueStore OpenRoots() {
  return UniqueStore(::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root"));
}

std::wstring EnvironmentText(const wchar_t* name) {
  wchar_t text[1024] = {};
  ::GetEnvironmentVariableW(name, text, ARRAYSIZE(text));
  return text;
}

}  // namespace

bool Exists(const std::wstring& path) { return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

TestServer::TestServer() : certificate_(ReadWholeFile(Path(L"ca.cer")).value_or("")) {
  trusted_ = ::CertAddEncodedCertificateToStore(
                 OpenRoots().get(), X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(certificate_.data()),
                 static_cast<DWORD>(certificate_.size()), CERT_STORE_ADD_REPLACE_EXISTING, nullptr) != FALSE;
  temp_ = Path(L"temp-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(::GetTickCount64()));
  ::CreateDirectoryW(temp_.c_str(), nullptr);
  record_ = temp_ + L"\\record";
  UseTemp(temp_);
  ::SetEnvironmentVariableW(L"VANTORA_TEST_RECORD", record_.c_str());
  ::SetEnvironmentVariableW(L"VANTORA_TEST_NOBODY", L"https://localhost:1");
  Use(L"good");
  ::DeleteFileW(Path(L"requests").c_str());
}

TestServer::~TestServer() {
  const UniqueStore roots = OpenRoots();
  PCCERT_CONTEXT found = nullptr;
  while ((found = ::CertEnumCertificatesInStore(roots.get(), found)) != nullptr) {
    const std::string encoded(reinterpret_cast<const char*>(found->pbCertEncoded), found->cbCertEncoded);
    if (encoded != certificate_) continue;
    ::CertDeleteCertificateFromStore(found);
    break;
  }
}

void TestServer::Use(const std::wstring& scenario, const wchar_t* variable) {
  ::SetEnvironmentVariableW(L"VANTORA_TEST_UPDATE_SERVER", (EnvironmentText(variable) + L"/" + scenario).c_str());
}

void TestServer::UseTemp(const std::wstring& folder) {
  ::SetEnvironmentVariableW(L"TMP", folder.c_str());
  ::SetEnvironmentVariableW(L"TEMP", folder.c_str());
}

std::string TestServer::Requests() { return ReadWholeFile(Path(L"requests")).value_or(""); }

std::wstring TestServer::Path(const std::wstring& name) {
  std::wstring path = L"Z:" + EnvironmentText(L"VANTORA_TEST_SERVER_FOLDER") + L"/" + name;
  for (wchar_t& character : path) {
    if (character == L'/') character = L'\\';
  }
  return path;
}

bool TestServer::WasLaunched() const { return Exists(record_); }

std::vector<std::wstring> TestServer::LaunchRecord() const {
  // Seen is not yet readable: whoever moves the file to its name may still hold it.
  auto text = ReadTextFile(record_);
  for (int waitedMs = 0; !text && waitedMs < kLaunchTimeoutMs; waitedMs += 50) {
    ::Sleep(50);
    text = ReadTextFile(record_);
  }
  std::vector<std::wstring> lines(1);
  for (const wchar_t character : text.value_or(L"")) {
    if (character == L'\n') {
      lines.emplace_back();
    } else {
      lines.back() += character;
    }
  }
  lines.pop_back();
  return lines;
}
