#pragma once

// How a rule's numbers cross between memory and the text formats: whole bytes there, megabytes with one decimal here. Numbers out
// of a field's range saturate; what is not a number is 0.

#include <cstdint>
#include <string>

/// Truncated toward zero into 0 to 4,294,967,295.
[[nodiscard]] std::uint32_t SaturateToUnsigned32(double value);
/// Megabytes of 1,048,576 bytes, truncated toward zero to whole bytes.
[[nodiscard]] std::uint64_t BytesFromMegabytes(double megabytes);
[[nodiscard]] double MegabytesFromBytes(std::uint64_t bytes);

/// What "%.1f" gives in the C locale, whatever locale is set.
[[nodiscard]] std::wstring FormatTenths(double value);
