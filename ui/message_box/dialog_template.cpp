#include "ui/message_box/dialog_template.h"

#include <string_view>
#include <utility>

namespace {

constexpr std::uint16_t kNone = 0;              // no menu, no class of its own, no creation data
constexpr std::uint16_t kOrdinalMark = 0xFFFF;  // an atom or a resource number follows instead of a text

/// Appends little-endian values, whatever the machine's own order.
class Packer {
 public:
  void Word(std::uint16_t value) {
    bytes_.push_back(static_cast<std::byte>(value & 0xFF));
    bytes_.push_back(static_cast<std::byte>(value >> 8));
  }
  void DoubleWord(std::uint32_t value) {
    Word(static_cast<std::uint16_t>(value & 0xFFFF));
    Word(static_cast<std::uint16_t>(value >> 16));
  }
  void Rect(const DialogUnitRect& rect) {
    for (const std::int16_t value : {rect.x, rect.y, rect.cx, rect.cy}) Word(static_cast<std::uint16_t>(value));
  }
  void Text(std::wstring_view text) {
    bool first = true;
    for (const wchar_t character : text) {
      auto code = static_cast<std::uint32_t>(character);
      if (code == 0) break;
      if (first && code == kOrdinalMark) code = 0xFFFD;  // would be read as a resource number
      first = false;
      if (code > 0xFFFF) {
        code -= 0x10000;
        Word(static_cast<std::uint16_t>(0xD800 + (code >> 10)));
        code = 0xDC00 + (code & 0x3FF);
      }
      Word(static_cast<std::uint16_t>(code));
    }
    Word(0);
  }
  void AlignToDoubleWord() {
    while (bytes_.size() % 4 != 0) bytes_.push_back(std::byte{0});
  }
  [[nodiscard]] std::vector<std::byte> Take() { return std::move(bytes_); }

 private:
  std::vector<std::byte> bytes_;
};

}  // namespace

CXDialogTemplate::CXDialogTemplate(std::uint32_t style, DialogUnitRect rect, std::wstring title)
    : style_(style), rect_(rect), title_(std::move(title)) {}

void CXDialogTemplate::Add(CXDialogItem item) { items_.push_back(std::move(item)); }

std::vector<std::byte> CXDialogTemplate::Pack() const {
  Packer packer;
  packer.DoubleWord(style_);
  packer.DoubleWord(0);
  packer.Word(static_cast<std::uint16_t>(items_.size()));
  packer.Rect(rect_);
  packer.Word(kNone);
  packer.Word(kNone);
  packer.Text(title_);
  for (const CXDialogItem& item : items_) {
    packer.AlignToDoubleWord();
    packer.DoubleWord(item.style);
    packer.DoubleWord(item.exStyle);
    packer.Rect(item.rect);
    packer.Word(item.id);
    packer.Word(kOrdinalMark);
    packer.Word(item.classAtom);
    packer.Text(item.text);
    packer.Word(kNone);
  }
  return packer.Take();
}
