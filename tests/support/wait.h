#pragma once

// Waiting with a limit: a condition is polled until it holds or the time is up. No test waits in any other way.

#include <windows.h>

namespace e2e {

inline constexpr DWORD kPatienceMs = 20'000;

/// The first result that converts to true; the last one when the time is up.
template <class Find>
auto WaitForResult(Find find, DWORD timeoutMs = kPatienceMs) {
  const ULONGLONG deadline = ::GetTickCount64() + timeoutMs;
  auto result = find();
  for (; !result && ::GetTickCount64() < deadline; result = find()) ::Sleep(5);
  return result;
}

/// Whether the condition holds within the time.
template <class Condition>
bool WaitUntil(Condition condition, DWORD timeoutMs = kPatienceMs) {
  return static_cast<bool>(WaitForResult(condition, timeoutMs));
}

}  // namespace e2e
