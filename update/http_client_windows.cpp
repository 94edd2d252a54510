#include "update/http_client_windows.h"

#include <algorithm>
#include <limits>
#include <vector>

bool WinInetClient::OpenSession(const wchar_t* agent) {
  Close();
  session_.reset(::InternetOpenW(agent, INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
  return session_ != nullptr;
}

void WinInetClient::SetTimeouts(std::uint32_t timeoutMs) {
  constexpr DWORD kOptions[] = {INTERNET_OPTION_CONNECT_TIMEOUT, INTERNET_OPTION_SEND_TIMEOUT, INTERNET_OPTION_RECEIVE_TIMEOUT};
  for (const DWORD option : kOptions) {
    DWORD value = timeoutMs;
    ::InternetSetOptionW(session_.get(), option, &value, sizeof value);
  }
}

bool WinInetClient::OpenUrl(const std::wstring& url) {
  // No flag beside this one: INTERNET_FLAG_IGNORE_REDIRECT_TO_HTTP above all is not to be here.
  address_.reset(::InternetOpenUrlW(session_.get(), url.c_str(), nullptr, 0, INTERNET_FLAG_NO_CACHE_WRITE, 0));
  return address_ != nullptr;
}

std::optional<std::uint32_t> WinInetClient::Status() {
  DWORD status = 0;
  DWORD size = sizeof status;
  if (!::HttpQueryInfoW(address_.get(), HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size, nullptr)) return {};
  return status;
}

std::wstring WinInetClient::AnsweringUrl() {
  DWORD bytes = 0;
  ::InternetQueryOptionW(address_.get(), INTERNET_OPTION_URL, nullptr, &bytes);
  std::vector<wchar_t> url(bytes / sizeof(wchar_t) + 1);
  bytes = static_cast<DWORD>(url.size() * sizeof(wchar_t));
  if (!::InternetQueryOptionW(address_.get(), INTERNET_OPTION_URL, url.data(), &bytes)) return {};
  url.back() = L'\0';
  return url.data();
}

std::optional<std::size_t> WinInetClient::Read(char* buffer, std::size_t capacity) {
  const auto wanted = static_cast<DWORD>(std::min<std::size_t>(capacity, std::numeric_limits<DWORD>::max()));
  DWORD count = 0;
  if (!::InternetReadFile(address_.get(), buffer, wanted, &count)) return {};
  return count;
}

void WinInetClient::Close() {
  address_.reset();
  session_.reset();
}
