#include <windows.h>

#include <exception>
#include <limits>

#include "platform/diagnostics.h"
#include "update/download.h"
#include "update/http_client_windows.h"
#include "update/update_channel.h"
#include "update/update_check.h"
#include "update/update_values.h"
#include "update/version.h"

namespace {

class SignalAtEnd {
 public:
  explicit SignalAtEnd(Event& done) : done_(done) {}
  ~SignalAtEnd() { done_.Signal(); }
  SignalAtEnd(const SignalAtEnd&) = delete;
  SignalAtEnd& operator=(const SignalAtEnd&) = delete;

 private:
  Event& done_;
};

/// From the thread's ANSI code page. Empty also when the text is longer than the system converts.
std::wstring WideText(std::string_view bytes) {
  if (bytes.empty() || bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return {};
  const int size = static_cast<int>(bytes.size());
  const int chars = ::MultiByteToWideChar(CP_THREAD_ACP, 0, bytes.data(), size, nullptr, 0);
  std::wstring text(static_cast<std::size_t>(chars), L'\0');
  ::MultiByteToWideChar(CP_THREAD_ACP, 0, bytes.data(), size, text.data(), chars);
  return text;
}

}  // namespace

std::wstring AskForLatestVersion(HttpClient& http, bool includeBetas) {
  try {
    std::string body;
    if (DownloadFile(http, VersionInfoUrl(includeBetas), body)) {
      const std::string_view bytes = VersionAnswerBytes(body);
      if (!bytes.empty()) return LatestVersionFromAnswer(WideText(bytes));
    }
  } catch (const std::exception&) {
    // No memory for the answer's text: a failed check like any other.
  }
  DebugLog(L"ERROR checking update");
  return AppVersionDisplay;
}

void CheckForUpdatesThread(UpdateState& updates, const SettingsStore& settings, Event& done) {
  done.Clear();
  const SignalAtEnd signalAtEnd(done);
  if (UpdateChecksDisabled()) return;
  WinInetClient http;
  updates.SetLatestVersion(AskForLatestVersion(http, settings.Get().includeBetas));
}
