#pragma once

// The seam between a download and the system's internet functions, so that time-outs, stalls, broken answers and redirects are
// tried without a network, and the real ones only once.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// One session with at most one open address. Used by one thread; every call blocks for as long as the network takes.
class HttpClient {
 public:
  virtual ~HttpClient() = default;

  /// Uses the system's proxy configuration.
  [[nodiscard]] virtual bool OpenSession(const wchar_t* agent) = 0;
  /// For connecting, sending and receiving.
  virtual void SetTimeouts(std::uint32_t timeoutMs) = 0;
  /// Requests the address and reads the answer's head, redirects followed. Nothing is written to a cache.
  [[nodiscard]] virtual bool OpenUrl(const std::wstring& url) = 0;
  /// The answer's status code; empty when it cannot be read.
  [[nodiscard]] virtual std::optional<std::uint32_t> Status() = 0;
  /// The address that gave the answer, after redirects; empty when it cannot be read.
  [[nodiscard]] virtual std::wstring AnsweringUrl() = 0;
  /// The next at most `capacity` bytes of the body and their number, 0 at its end. Empty on failure, a time-out included.
  [[nodiscard]] virtual std::optional<std::size_t> Read(char* buffer, std::size_t capacity) = 0;
  /// Ends address and session; without effect when there are none.
  virtual void Close() = 0;
};
