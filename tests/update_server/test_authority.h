#pragma once

// The test authority as one that the system trusts, while this lives. For tests that with_update_server runs.

#include <windows.h>

#include <string>

class TestAuthority {
 public:
  TestAuthority();
  ~TestAuthority();
  TestAuthority(const TestAuthority&) = delete;
  TestAuthority& operator=(const TestAuthority&) = delete;
  [[nodiscard]] bool IsTrusted() const { return trusted_; }

 private:
  std::string certificate_;
  bool trusted_ = false;
};

/// The value of an environment variable; empty when there is none.
std::wstring EnvironmentText(const wchar_t* name);
/// A file or folder of the update server's, named as Windows programs name it.
std::wstring ServerPath(const std::wstring& name);
