#pragma once

// Where updates come from. The addresses themselves are set when the tree is configured (cmake/product.cmake); the paths below
// them are what the update server offers.

#include <string>

#include "product_config.h"

/// The product's web page.
inline constexpr wchar_t kProductPage[] = L"" VANTORA_PRODUCT_PAGE;

/// Scheme, host and port of the update server, without a closing slash. Alone in its source file, so that a test program can link
/// another body that names the server it has started.
[[nodiscard]] std::wstring UpdateServer();

[[nodiscard]] std::wstring VersionInfoUrl(bool includeBetas);
[[nodiscard]] std::wstring InstallerUrl(bool includeBetas);
