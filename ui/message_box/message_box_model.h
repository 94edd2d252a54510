#pragma once

// What a message box is before it is a window: which buttons its style asks for, what Esc does, where everything goes and what
// Ctrl+C copies. The text measurer is handed in, so that all of it is computed and tested without a window.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ui/framework/anchors.h"
#include "ui/message_box/dialog_template.h"

/// One kind of button: its label, and the string resource under which a translated label may stand.
struct ButtonLabel {
  std::wstring_view text;
  std::uint32_t stringId;
};

struct MessageBoxButton {
  const ButtonLabel* label;
  std::uint16_t id;  ///< what the box returns
};

struct MessageBoxButtons {
  std::span<const MessageBoxButton> buttons;  ///< from left to right
  int escapeResult;                           ///< what Esc and the close box give; 0: the box cannot be closed by them
};

/// By the low four bits of the style.
[[nodiscard]] const MessageBoxButtons& ButtonsOfStyle(std::uint32_t style);
/// The place of the default button; the first when the style names one beyond the last.
[[nodiscard]] std::size_t DefaultButtonOfStyle(std::uint32_t style, std::size_t buttonCount);

enum class MessageBoxIcon { kNone, kHand, kQuestion, kExclamation, kAsterisk };
[[nodiscard]] MessageBoxIcon IconOfStyle(std::uint32_t style);

struct PixelSize {
  int width = 0;
  int height = 0;
};

/// Measures in the box's font.
class TextMeasurer {
 public:
  virtual ~TextMeasurer() = default;
  /// Broken into lines no wider than maxWidthPx, tabs expanded, "&" an ordinary character.
  [[nodiscard]] virtual PixelSize MeasureMessage(std::wstring_view text, int maxWidthPx) = 0;
  /// One line, "&" marking the mnemonic.
  [[nodiscard]] virtual int MeasureLabel(std::wstring_view label) = 0;
};

/// The machine's figures that a layout depends on.
struct MessageBoxMetrics {
  int dialogBaseX = 8;   ///< pixels of four horizontal dialog units
  int dialogBaseY = 16;  ///< pixels of eight vertical dialog units
  int screenWidth = 0;
  PixelSize iconSize;  ///< of a system icon
  int dpi = 96;        ///< distances are given for 96 and scaled
};

/// What is shown, texts as shown.
struct MessageBoxContent {
  std::wstring caption;
  std::wstring message;
  std::vector<std::wstring> labels;  ///< of the style's buttons, from left to right
};

/// In pixels of the client area.
struct MessageBoxLayout {
  LayoutRect icon;     ///< empty when the style has none
  LayoutRect message;  ///< the message's block; the panel ends where it ends
  LayoutRect text;     ///< the part of the block in which the text stands
  std::vector<LayoutRect> buttons;
  PixelSize client;
};

[[nodiscard]] MessageBoxLayout LayOutMessageBox(const MessageBoxContent& content, std::uint32_t style,
                                                const MessageBoxMetrics& metrics, TextMeasurer& measurer);

/// Sizes and positions in dialog units, rounded down.
[[nodiscard]] DialogUnitRect ToDialogUnits(const LayoutRect& pixels, const MessageBoxMetrics& metrics);

inline constexpr std::uint16_t kMessageBoxIconId = 1000;
inline constexpr std::uint16_t kMessageBoxTextId = 1001;

/// The box as a dialog template: icon (where the style has one), message, buttons.
[[nodiscard]] CXDialogTemplate MakeMessageBoxTemplate(const MessageBoxContent& content, std::uint32_t style,
                                                      const MessageBoxLayout& layout, const MessageBoxMetrics& metrics);

/// What Ctrl+C copies: caption, message and labels between lines of hyphens.
[[nodiscard]] std::wstring MessageBoxCopyText(const MessageBoxContent& content);
