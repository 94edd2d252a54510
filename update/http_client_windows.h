#pragma once

// The system's internet functions. Windows builds only.

#include <windows.h>
#include <wininet.h>

#include "platform/handles.h"
#include "update/http_client.h"

using UniqueInternet = Unique<HINTERNET, ::InternetCloseHandle>;

class WinInetClient : public HttpClient {
 public:
  [[nodiscard]] bool OpenSession(const wchar_t* agent) override;
  void SetTimeouts(std::uint32_t timeoutMs) override;
  [[nodiscard]] bool OpenUrl(const std::wstring& url) override;
  [[nodiscard]] std::optional<std::uint32_t> Status() override;
  [[nodiscard]] std::wstring AnsweringUrl() override;
  [[nodiscard]] std::optional<std::size_t> Read(char* buffer, std::size_t capacity) override;
  void Close() override;

 private:
  // In this order, so that the address is closed before its session.
  UniqueInternet session_;
  UniqueInternet address_;
};
