#pragma once

#include <string>

/// A name as it may be shown anywhere: control characters, line ends and characters that turn the direction of writing, with
/// which a program's name could forge lines or steer a terminal, become "?".
[[nodiscard]] std::wstring PrintableText(std::wstring text);
