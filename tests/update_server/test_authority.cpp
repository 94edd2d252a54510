#include "test_authority.h"

#include <wincrypt.h>

#include "platform/file.h"
#include "platform/handles.h"

namespace {

void CloseStore(HCERTSTORE store) { ::CertCloseStore(store, 0); }
using UniqueStore = Unique<HCERTSTORE, CloseStore>;

/// The current user's trusted authorities. A change is there for others once the store is closed.
UniqueStore OpenRoots() {
  return UniqueStore(::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root"));
}

}  // namespace

TestAuthority::TestAuthority() : certificate_(ReadWholeFile(ServerPath(L"ca.cer")).value_or("")) {
  const UniqueStore roots = OpenRoots();
  trusted_ = ::CertAddEncodedCertificateToStore(
                 roots.get(), X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(certificate_.data()),
                 static_cast<DWORD>(certificate_.size()), CERT_STORE_ADD_REPLACE_EXISTING, nullptr) != FALSE;
}

TestAuthority::~TestAuthority() {
  const UniqueStore roots = OpenRoots();
  PCCERT_CONTEXT found = nullptr;
  while ((found = ::CertEnumCertificatesInStore(roots.get(), found)) != nullptr) {
    const std::string encoded(reinterpret_cast<const char*>(found->pbCertEncoded), found->cbCertEncoded);
    if (encoded != certificate_) continue;
    ::CertDeleteCertificateFromStore(found);
    break;
  }
}

std::wstring EnvironmentText(const wchar_t* name) {
  wchar_t text[1024] = {};
  ::GetEnvironmentVariableW(name, text, ARRAYSIZE(text));
  return text;
}

std::wstring ServerPath(const std::wstring& name) {
  std::wstring path = L"Z:" + EnvironmentText(L"VANTORA_TEST_SERVER_FOLDER") + L"/" + name;
  for (wchar_t& character : path) {
    if (character == L'/') character = L'\\';
  }
  return path;
}
