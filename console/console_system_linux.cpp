#include "console/console_system.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "platform/text_encoding.h"

struct EndRequest::Impl {
  sigset_t signals{};
  bool asked = false;
};

std::wstring UserRulesFile() {
  const char* configuration = std::getenv("XDG_CONFIG_HOME");
  const char* home = std::getenv("HOME");
  std::string path;
  if (configuration != nullptr && *configuration == '/') {
    path = configuration;
  } else if (home != nullptr && *home != '\0') {
    path = std::string(home) + "/.config";
  } else {
    return {};
  }
  return DecodeUtf8Text(path + "/vantora/rules.csv");
}

std::string HostName() {
  char name[256] = {};
  ::gethostname(name, sizeof name - 1);
  return name;
}

bool IsTerminal() {
  const char* terminal = std::getenv("TERM");
  return ::isatty(STDOUT_FILENO) != 0 && terminal != nullptr && std::string(terminal) != "dumb" &&
         std::getenv("NO_COLOR") == nullptr;
}

bool RenameOver(const std::wstring& from, const std::wstring& to) {
  return std::rename(EncodeUtf8(from).c_str(), EncodeUtf8(to).c_str()) == 0;
}

void PrepareOutput() { ::signal(SIGPIPE, SIG_IGN); }

// Blocked, the signals wait to be taken: between two processes of a cycle, or at once while this sleeps.
EndRequest::EndRequest() : impl_(std::make_unique<Impl>()) {
  ::sigemptyset(&impl_->signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaddset(&impl_->signals, signal);
  ::pthread_sigmask(SIG_BLOCK, &impl_->signals, nullptr);
}
EndRequest::~EndRequest() = default;

bool EndRequest::Wait(std::uint32_t timeoutMs) {
  const std::timespec time{static_cast<std::time_t>(timeoutMs / 1000), static_cast<long>(timeoutMs % 1000) * 1'000'000};
  impl_->asked = impl_->asked || ::sigtimedwait(&impl_->signals, nullptr, &time) > 0;
  return impl_->asked;
}
