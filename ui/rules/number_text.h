#pragma once

// Numbers as users type them into the rule list's edit box and the rule editor. Nothing is refused: reading stops at the first
// character that cannot continue the number, no number is 0, and what does not fit is brought to the nearest value that does.

#include <cstdint>
#include <string_view>

/// A cell's integer: white space and one sign may lead. A negative number is taken as the unsigned 32-bit value with the same
/// bits (below the signed range: as the least signed value).
[[nodiscard]] std::uint32_t ReadCellInteger(std::wstring_view text);

/// An integer as the system reads one from a dialog's field when asked for an unsigned number: a minus sign makes it no number.
[[nodiscard]] std::uint32_t ReadFieldInteger(std::wstring_view text);

/// A decimal floating-point number: white space and one sign may lead, an exponent may follow. Never infinite, never
/// not-a-number.
[[nodiscard]] double ReadDecimal(std::wstring_view text);
