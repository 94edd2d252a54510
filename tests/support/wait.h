#pragma once

// Waiting with a limit: a condition is polled until it holds or the time is up. No test waits in any other way.

#include <windows.h>

namespace e2e {

inline constexpr DWORD kPatienceMs = 20'000;
inline constexpr DWORD kPollMs = 5;

/// True as soon as the condition holds; false when it does not within the time.
template <class Condition>
bool WaitUntil(Condition condition, DWORD timeoutMs = kPatienceMs) {
  const ULONGLONG deadline = ::GetTickCount64() + timeoutMs;
  while (!condition()) {
    if (::GetTickCount64() >= deadline) return false;
    ::Sleep(kPollMs);
  }
  return true;
}

/// The first result that converts to true; the last one when the time is up.
template <class Find>
auto WaitForResult(Find find, DWORD timeoutMs = kPatienceMs) {
  auto result = find();
  WaitUntil([&] { return static_cast<bool>(result) || static_cast<bool>(result = find()); }, timeoutMs);
  return result;
}

}  // namespace e2e
