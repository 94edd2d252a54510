#pragma once

// How a rule's fields read in text and are read from it, in the rule list and in the rule editor alike.

#include <string>
#include <string_view>

#include "core/ceilings.h"

/// The longest process pattern that a field or a cell can hold.
inline constexpr std::size_t kMaxPatternChars = 255;

/// A whole number, memory in whole MB, nothing where there is no limit. One below 1 MB reads "0": it is set.
[[nodiscard]] std::wstring CeilingText(const Ceiling& ceiling, const ThresholdRule& rule);

/// Any text is accepted. `readInteger`: how whole numbers are read there.
void StoreCeiling(const Ceiling& ceiling, ThresholdRule& rule, std::wstring_view text,
                  std::uint32_t (*readInteger)(std::wstring_view text));
