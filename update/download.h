#pragma once

// One address fetched into memory.

#include <cstdint>
#include <string>

#include "update/http_client.h"

inline constexpr std::uint32_t kDownloadTimeoutMs = 30'000;

/// Fetches the address; true also for an empty body. False, with `body` empty, when there is no session or connection, the status
/// is not 200, an answer to https comes from an address without it, or memory for the body cannot be had. A body whose reading
/// fails half way ends there. Leaves the client closed.
[[nodiscard]] bool DownloadFile(HttpClient& http, const std::wstring& url, std::string& body);
