#pragma once

// An internet that answers as a test says and can break at every step.

#include <algorithm>
#include <cstring>
#include <functional>

#include "update/http_client.h"

class FakeHttpClient : public HttpClient {
 public:
  bool sessionOpens = true;
  bool urlOpens = true;
  std::optional<std::uint32_t> status = 200;
  std::wstring answeringUrl = L"https://localhost/";
  std::string body;
  std::size_t brokenAt = std::string::npos;  ///< reading fails here, as it does when a time-out runs out
  std::size_t pieceBytes = std::string::npos;

  std::uint32_t timeoutMs = 0;  ///< as it was when the address was opened
  std::size_t largestRead = 0;
  int closes = 0;

  [[nodiscard]] bool OpenSession(const wchar_t*) override { return sessionOpens; }
  void SetTimeouts(std::uint32_t ms) override { pendingTimeoutMs_ = ms; }
  [[nodiscard]] bool OpenUrl(const std::wstring&) override {
    timeoutMs = pendingTimeoutMs_;
    return urlOpens;
  }
  [[nodiscard]] std::optional<std::uint32_t> Status() override { return status; }
  [[nodiscard]] std::wstring AnsweringUrl() override { return answeringUrl; }
  [[nodiscard]] std::optional<std::size_t> Read(char* buffer, std::size_t capacity) override {
    largestRead = std::max(largestRead, capacity);
    if (position_ >= brokenAt) return std::nullopt;
    const std::size_t count = std::min({capacity, pieceBytes, body.size() - position_, brokenAt - position_});
    std::memcpy(buffer, body.data() + position_, count);
    position_ += count;
    return count;
  }
  void Close() override { ++closes; }

 private:
  std::uint32_t pendingTimeoutMs_ = 0;
  std::size_t position_ = 0;
};
