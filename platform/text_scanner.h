#pragma once

// Formatted input for the text formats, one conversion a call, with the meaning of the runtime's scanf family but without its
// locale and its undefined overflow: a number out of range saturates.

#include <cstddef>
#include <cstdint>
#include <string_view>

struct DecimalNumber {
  double value = 0.0;      ///< finite; saturates at the largest
  std::size_t length = 0;  ///< characters that belong to the number; 0: the text does not begin with one
};

/// The number that the text begins with: optional sign, digits with an optional fraction, optional exponent. No leading blanks.
/// Linear in the text's length.
[[nodiscard]] DecimalNumber ParseDecimal(std::wstring_view text);

/// What the Windows runtime's wide-character test calls white space, on every machine and under every locale.
[[nodiscard]] bool IsBlank(wchar_t character);

/// Each conversion either succeeds and moves on, or fails and leaves position and output as they were. Borrows the text.
class TextScanner {
 public:
  explicit TextScanner(std::wstring_view text) : rest_(text) {}

  struct Integer {
    bool negative = false;
    std::uint64_t magnitude = 0;  ///< saturates beyond 32 bits
    [[nodiscard]] std::uint32_t Saturated(std::uint32_t highest) const {
      return magnitude > highest ? highest : static_cast<std::uint32_t>(magnitude);
    }
  };
  /// "%d" of any size: skips blanks, accepts a sign.
  [[nodiscard]] bool TakeInteger(Integer& integer);

  void SkipBlanks();
  /// The next character must be this one.
  [[nodiscard]] bool Literal(wchar_t character);
  /// "%u" and "%hu": skips blanks, accepts a sign. Negative numbers read as 0, larger ones than `highest` as `highest`.
  [[nodiscard]] bool Unsigned(std::uint32_t highest, std::uint32_t& value);
  /// "%d", of which only matters whether it is 0.
  [[nodiscard]] bool IsNonZero(bool& value);
  /// "%lf": skips blanks.
  [[nodiscard]] bool Decimal(double& value);

  [[nodiscard]] std::wstring_view Rest() const { return rest_; }
  void Skip(std::size_t count) { rest_.remove_prefix(count); }

 private:
  std::wstring_view rest_;
};
