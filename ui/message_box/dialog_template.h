#pragma once

// A dialog template built in memory, for windows whose controls are known only when they open. Packs plain values into the
// documented byte layout, so it needs no Windows type and is tested everywhere.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Position and size in dialog units.
struct DialogUnitRect {
  std::int16_t x = 0;
  std::int16_t y = 0;
  std::int16_t cx = 0;
  std::int16_t cy = 0;
  bool operator==(const DialogUnitRect&) const = default;
};

inline constexpr std::uint16_t kButtonClassAtom = 0x80;
inline constexpr std::uint16_t kStaticClassAtom = 0x82;

/// One control.
struct CXDialogItem {
  std::uint16_t classAtom = 0;
  std::uint32_t style = 0;
  std::uint32_t exStyle = 0;
  DialogUnitRect rect;
  std::uint16_t id = 0;
  std::wstring text;
};

/// The dialog's header and its controls.
class CXDialogTemplate {
 public:
  CXDialogTemplate(std::uint32_t style, DialogUnitRect rect, std::wstring title);

  void Add(CXDialogItem item);
  [[nodiscard]] const std::vector<CXDialogItem>& Items() const { return items_; }

  /// The packed template: header, then each control on a 4-byte boundary. Texts become UTF-16.
  [[nodiscard]] std::vector<std::byte> Pack() const;

 private:
  std::uint32_t style_;
  DialogUnitRect rect_;
  std::wstring title_;
  std::vector<CXDialogItem> items_;
};
