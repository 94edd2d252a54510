#include "update/download.h"

#include <exception>
#include <optional>
#include <string_view>

#include "platform/diagnostics.h"

namespace {

constexpr std::size_t kReadBytes = 16'384;
constexpr std::uint32_t kStatusOk = 200;
constexpr std::wstring_view kSecureScheme = L"https:";

class CloseAtEnd {
 public:
  explicit CloseAtEnd(HttpClient& http) : http_(http) {}
  ~CloseAtEnd() { http_.Close(); }
  CloseAtEnd(const CloseAtEnd&) = delete;
  CloseAtEnd& operator=(const CloseAtEnd&) = delete;

 private:
  HttpClient& http_;
};

bool IsSecure(std::wstring_view url) {
  if (url.size() < kSecureScheme.size()) return false;
  for (std::size_t i = 0; i < kSecureScheme.size(); ++i) {
    const wchar_t lower = url[i] >= L'A' && url[i] <= L'Z' ? static_cast<wchar_t>(url[i] - L'A' + L'a') : url[i];
    if (lower != kSecureScheme[i]) return false;
  }
  return true;
}

/// Connection, status and address of the answer; the body can be read when this is true.
bool OpenAnswer(HttpClient& http, const std::wstring& url) {
  if (!http.OpenSession(L"Vantora")) {
    DebugLog(L"\n ERROR: Open Internet 1");
    return false;
  }
  http.SetTimeouts(kDownloadTimeoutMs);
  if (!http.OpenUrl(url)) {
    DebugLog(L"ERROR - AS_ERROR_CONNECT_GENERAL");
    return false;
  }
  const std::optional<std::uint32_t> status = http.Status();
  if (status.has_value() && *status != kStatusOk) {
    DebugLog(L"HTTP error %u for URL: %ls", static_cast<unsigned>(*status), url.c_str());
    return false;
  }
  // The system refuses a redirect that leaves https unless asked to allow it; this is the second lock on the same door.
  if (IsSecure(url) && !IsSecure(http.AnsweringUrl())) {
    DebugLog(L"ERROR: answer did not come over https for URL: %ls", url.c_str());
    return false;
  }
  return true;
}

}  // namespace

bool DownloadFile(HttpClient& http, const std::wstring& url, std::string& body) {
  body.clear();
  DebugLog(L"DownloadFile URL: %ls\n", url.c_str());
  const CloseAtEnd closeAtEnd(http);
  if (!OpenAnswer(http, url)) return false;
  try {
    char buffer[kReadBytes];
    while (const std::size_t count = http.Read(buffer, sizeof buffer).value_or(0)) body.append(buffer, count);
  } catch (const std::exception&) {  // no memory, or more than a string can hold
    std::string().swap(body);
    DebugLog(L"ERROR: no memory for the download");
    return false;
  }
  DebugLog(L"Returned download size of %d bytes", static_cast<int>(body.size()));
  return true;
}
