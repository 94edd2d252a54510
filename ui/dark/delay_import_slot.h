#pragma once

// Finds where a loaded module keeps the address of a function that it imports late by ordinal. Works over the module's bytes only
// and reads nothing that the headers inside them do not lead to, so that a damaged or unknown image yields "not found" and no
// fault.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// The offset in `image`, a 64-bit module as it lies in memory, of the 8-byte slot for `ordinal` of `library` (compared without
/// regard to ASCII case); 0 when there is none.
[[nodiscard]] std::size_t FindDelayImportSlot(std::span<const std::byte> image, std::string_view library, std::uint16_t ordinal);
