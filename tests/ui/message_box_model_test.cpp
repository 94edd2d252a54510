#include "ui/message_box/message_box_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace {

/// Every character 7 wide, every line 16 high, broken anywhere.
class GridMeasurer : public TextMeasurer {
 public:
  PixelSize MeasureMessage(std::wstring_view text, int maxWidthPx) override {
    const int length = static_cast<int>(text.size()) * 7;
    const int lines = std::max(1, (length + maxWidthPx - 1) / maxWidthPx);
    return {std::min(length, maxWidthPx), lines * 16};
  }
  int MeasureLabel(std::wstring_view label) override { return static_cast<int>(label.size()) * 7; }
};

MessageBoxMetrics MetricsAt(int dpi) { return {8 * dpi / 96, 16 * dpi / 96, 1280, {32 * dpi / 96, 32 * dpi / 96}, dpi}; }

MessageBoxContent ContentFor(std::uint32_t style, std::size_t characters) {
  MessageBoxContent content{L"Caption", std::wstring(characters, L'x'), {}};
  for (const MessageBoxButton& button : ButtonsOfStyle(style).buttons) content.labels.emplace_back(button.label->text);
  return content;
}

// Whatever the style, the length and the resolution: nothing overlaps or sticks out, and the text has
// room.
TEST(MessageBoxModel, EveryCombinationYieldsASoundTemplate) {
  GridMeasurer measurer;
  for (const int dpi : {96, 120, 144, 192}) {
    for (std::uint32_t style = 0; style < 0x800; ++style) {
      const std::uint32_t full = style | (style % 2 != 0 ? 0x1000u : 0u);
      SCOPED_TRACE(testing::Message() << dpi << " dpi, style " << std::hex << full);
      const MessageBoxContent content = ContentFor(full, style % 7 * 40);
      const MessageBoxMetrics metrics = MetricsAt(dpi);
      const MessageBoxLayout layout = LayOutMessageBox(content, full, metrics, measurer);
      const CXDialogTemplate box = MakeMessageBoxTemplate(content, full, layout, metrics);
      const DialogUnitRect client = ToDialogUnits({0, 0, layout.client.width, layout.client.height}, metrics);

      const auto buttons = ButtonsOfStyle(full).buttons;
      const std::size_t first = IconOfStyle(full) == MessageBoxIcon::kNone ? 1 : 2;
      ASSERT_EQ(box.Pack()[0], std::byte((full & 0x1000) != 0 ? 0x82 : 0x80));
      const auto& items = box.Items();
      ASSERT_EQ(items.size(), first + buttons.size());
      for (std::size_t i = 0; i < items.size(); ++i) {
        const DialogUnitRect& a = items[i].rect;
        ASSERT_TRUE(a.x >= 0 && a.y >= 0 && a.x + a.cx <= client.cx && a.y + a.cy <= client.cy) << i;
        for (std::size_t k = 0; k < i; ++k) {
          const DialogUnitRect& b = items[k].rect;
          ASSERT_TRUE(a.x + a.cx <= b.x || b.x + b.cx <= a.x || a.y + a.cy <= b.y || b.y + b.cy <= a.y) << k << " and " << i;
        }
      }
      const int textWidth = items[first - 1].rect.cx * metrics.dialogBaseX / 4;
      ASSERT_GE(textWidth, measurer.MeasureMessage(content.message, 640 - 64 * dpi / 96).width);
    }
  }
}

}  // namespace
