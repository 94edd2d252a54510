#pragma once

// What the console companion asks of the system it runs on.

#include <cstdint>
#include <memory>
#include <string>

/// The user's own rules file, there or not; empty when the user has no place for one.
[[nodiscard]] std::wstring UserRulesFile();
[[nodiscard]] std::string HostName();
/// Whether standard output is a terminal that a person looks at.
[[nodiscard]] bool IsTerminal();
/// Puts the one file in the other's place in one step.
bool RenameOver(const std::wstring& from, const std::wstring& to);
/// Standard output takes UTF-8 bytes as they are, and a reader that has gone makes writes fail instead of ending this process.
void PrepareOutput();

/// Ctrl+C and the system's requests to end, from the making of this object on. One per process.
class EndRequest {
 public:
  EndRequest();
  ~EndRequest();
  EndRequest(const EndRequest&) = delete;
  EndRequest& operator=(const EndRequest&) = delete;

  /// Waits at most so long; true when this process is to end. 0 only asks.
  [[nodiscard]] bool Wait(std::uint32_t timeoutMs);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};
