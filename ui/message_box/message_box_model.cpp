#include "ui/message_box/message_box_model.h"

#include <algorithm>
#include <limits>

namespace {

enum LabelIndex : std::size_t {
  kAbort,
  kCancel,
  kContinue,
  kDontAsk,
  kDontTell,
  kDontShow,
  kHelp,
  kIgnore,
  kIgnoreAll,
  kNo,
  kNoToAll,
  kOk,
  kReport,
  kRetry,
  kSkip,
  kSkipAll,
  kTryAgain,
  kYes,
  kYesToAll,
};

constexpr ButtonLabel kLabels[] = {
    {L"&Abort", 9005},
    {L"Cancel", 9002},
    {L"&Continue", 9009},
    {L"Don't ask me again", 9010},
    {L"Don't tell me again", 9011},
    {L"Don't show again", 9012},
    {L"&Help", 9006},
    {L"&Ignore", 9003},
    {L"I&gnore All", 9017},
    {L"&No", 9008},
    {L"N&o to All", 9014},
    {L"OK", 9001},
    {L"Re&port", 9016},
    {L"&Retry", 9004},
    {L"&Skip", 9018},
    {L"S&kip All", 9019},
    {L"&Try Again", 9015},
    {L"&Yes", 9007},
    {L"Y&es to All", 9013},
};

constexpr MessageBoxButton kOkSet[] = {{&kLabels[kOk], 1}};
constexpr MessageBoxButton kOkCancelSet[] = {{&kLabels[kOk], 1}, {&kLabels[kCancel], 2}};
constexpr MessageBoxButton kAbortRetryIgnoreSet[] = {{&kLabels[kAbort], 3}, {&kLabels[kRetry], 4}, {&kLabels[kIgnore], 5}};
constexpr MessageBoxButton kYesNoCancelSet[] = {{&kLabels[kYes], 6}, {&kLabels[kNo], 7}, {&kLabels[kCancel], 2}};
constexpr MessageBoxButton kYesNoSet[] = {{&kLabels[kYes], 6}, {&kLabels[kNo], 7}};
constexpr MessageBoxButton kRetryCancelSet[] = {{&kLabels[kRetry], 4}, {&kLabels[kCancel], 2}};
constexpr MessageBoxButton kCancelTryContinueSet[] = {
    {&kLabels[kCancel], 2}, {&kLabels[kTryAgain], 10}, {&kLabels[kContinue], 11}};
constexpr MessageBoxButton kContinueAbortSet[] = {{&kLabels[kContinue], 11}, {&kLabels[kAbort], 3}};
constexpr MessageBoxButton kSkipSet[] = {{&kLabels[kSkip], 14}, {&kLabels[kSkipAll], 15}, {&kLabels[kCancel], 2}};
constexpr MessageBoxButton kIgnoreSet[] = {{&kLabels[kIgnore], 5}, {&kLabels[kIgnoreAll], 16}, {&kLabels[kCancel], 2}};

/// By the style's low four bits; what lies beyond the last row is the row after it.
constexpr MessageBoxButtons kSets[] = {
    {kOkSet, 1},          {kOkCancelSet, 2},          {kAbortRetryIgnoreSet, 0}, {kYesNoCancelSet, 2}, {kYesNoSet, 0},
    {kRetryCancelSet, 2}, {kCancelTryContinueSet, 2}, {kContinueAbortSet, 0},    {kSkipSet, 2},        {kIgnoreSet, 2},
};
constexpr MessageBoxButtons kUnknownSet = {kOkSet, 0};

// Distances in pixels at 96 dpi.
constexpr int kLabelPadding = 20;
constexpr int kButtonGap = 6;
constexpr int kMessageMargin = 10;
constexpr int kIconMeasureRoom = 16;
constexpr int kMessageExtraWidth = 28;
constexpr int kMessageTop = 32;
constexpr int kMessageExtraBottom = 61;
constexpr int kIconLeft = 24;
constexpr int kIconTop = 24;
constexpr int kIconExtra = 2;
constexpr int kButtonsBelow = 14;
constexpr int kButtonsRight = 16;
constexpr int kMessageRight = 24;
constexpr int kNoIconRoom = 16;
constexpr int kTextInset = 8;
constexpr int kRowExtra = 32;
constexpr int kBottomMargin = 12;
// In dialog units.
constexpr int kButtonUnitsWide = 38 + 6;
constexpr int kButtonUnitsHigh = 12 + 1;

constexpr std::uint32_t kMbSystemModal = 0x1000;

/// value * numerator / denominator, rounded to the nearest.
int MultiplyDivide(int value, int numerator, int denominator) { return (value * numerator + denominator / 2) / denominator; }

int Width(const LayoutRect& rect) { return rect.right - rect.left; }
int Height(const LayoutRect& rect) { return rect.bottom - rect.top; }

/// One layout being made; the steps run in the order in which LayOutMessageBox calls them.
class LayoutMaker {
 public:
  LayoutMaker(const MessageBoxContent& content, std::uint32_t style, const MessageBoxMetrics& metrics, TextMeasurer& measurer)
      : content_(content), metrics_(metrics), measurer_(measurer), hasIcon_(IconOfStyle(style) != MessageBoxIcon::kNone) {}

  MessageBoxLayout Make() {
    SizeButtons();
    PlaceMessage();
    PlaceButtons();
    return std::move(layout_);
  }

 private:
  [[nodiscard]] int Px(int at96) const { return MultiplyDivide(at96, metrics_.dpi, 96); }

  void SizeButtons() {
    const int least = MultiplyDivide(kButtonUnitsWide, metrics_.dialogBaseX, 4);
    const int height = MultiplyDivide(kButtonUnitsHigh, metrics_.dialogBaseY, 8);
    for (const std::wstring& label : content_.labels) {
      const int width = std::max(measurer_.MeasureLabel(label) + Px(kLabelPadding), least);
      layout_.buttons.push_back({0, 0, width, height});
      rowWidth_ += width + (layout_.buttons.size() > 1 ? Px(kButtonGap) : 0);
    }
  }

  void PlaceMessage() {
    int room = metrics_.screenWidth / 2 - Px(kMessageMargin);
    if (hasIcon_) room -= metrics_.iconSize.width + Px(kIconMeasureRoom);
    const PixelSize size = measurer_.MeasureMessage(content_.message, room);
    LayoutRect& message = layout_.message;
    message = {0, Px(kMessageTop), size.width + Px(kMessageExtraWidth), size.height + Px(kMessageExtraBottom)};
    if (hasIcon_) PlaceIcon(size.height > measurer_.MeasureMessage(L"My", room).height);
    // The text keeps a distance from the icon, and from the edge where there is none; the block itself stays as measured.
    const int shift = hasIcon_ ? 0 : Px(kNoIconRoom);
    layout_.text = {message.left + shift + Px(kTextInset), message.top, message.right + shift, message.bottom};
  }

  void PlaceIcon(bool severalLines) {
    LayoutRect& icon = layout_.icon;
    icon.left = Px(kIconLeft);
    icon.top = Px(kIconTop);
    icon.right = icon.left + metrics_.iconSize.width + Px(kIconExtra);
    icon.bottom = icon.top + metrics_.iconSize.height + Px(kIconExtra);
    LayoutRect& message = layout_.message;
    message.left += metrics_.iconSize.width + Px(kIconLeft);
    message.right += metrics_.iconSize.width + Px(kIconLeft);
    if (severalLines) {
      message.bottom -= message.top - icon.top;
      message.top = icon.top;
    }
  }

  void PlaceButtons() {
    const int messageWidth = layout_.message.right + Px(kMessageRight) + (hasIcon_ ? 0 : Px(kNoIconRoom));
    layout_.client.width = std::max(messageWidth, rowWidth_ + Px(kRowExtra));
    const int top = std::max(layout_.message.bottom, layout_.icon.bottom) + Px(kButtonsBelow);
    int left = layout_.client.width - Px(kButtonsRight) - rowWidth_;
    for (LayoutRect& button : layout_.buttons) {
      button = {left, top, left + Width(button), top + Height(button)};
      left = button.right + Px(kButtonGap);
      layout_.client.height = button.bottom + Px(kBottomMargin);
    }
  }

  const MessageBoxContent& content_;
  const MessageBoxMetrics& metrics_;
  TextMeasurer& measurer_;
  bool hasIcon_;
  int rowWidth_ = 0;
  MessageBoxLayout layout_;
};

}  // namespace

const MessageBoxButtons& ButtonsOfStyle(std::uint32_t style) {
  const std::uint32_t set = style & 0xF;
  return set < std::size(kSets) ? kSets[set] : kUnknownSet;
}

std::size_t DefaultButtonOfStyle(std::uint32_t style, std::size_t buttonCount) {
  const std::size_t place = (style >> 8) & 0xF;
  return place < buttonCount ? place : 0;
}

MessageBoxIcon IconOfStyle(std::uint32_t style) {
  switch (style & 0xF0) {
    case 0x00:
      return MessageBoxIcon::kNone;
    case 0x10:
      return MessageBoxIcon::kHand;
    case 0x20:
      return MessageBoxIcon::kQuestion;
    case 0x40:
      return MessageBoxIcon::kAsterisk;
    default:
      return MessageBoxIcon::kExclamation;
  }
}

MessageBoxLayout LayOutMessageBox(const MessageBoxContent& content, std::uint32_t style, const MessageBoxMetrics& metrics,
                                  TextMeasurer& measurer) {
  return LayoutMaker(content, style, metrics, measurer).Make();
}

DialogUnitRect ToDialogUnits(const LayoutRect& pixels, const MessageBoxMetrics& metrics) {
  const auto convert = [](int length, int units, int base) {
    constexpr int kMost = std::numeric_limits<std::int16_t>::max();
    return static_cast<std::int16_t>(std::clamp(length * units / std::max(base, 1), 0, kMost));
  };
  return {convert(pixels.left, 4, metrics.dialogBaseX), convert(pixels.top, 8, metrics.dialogBaseY),
          convert(Width(pixels), 4, metrics.dialogBaseX), convert(Height(pixels), 8, metrics.dialogBaseY)};
}

CXDialogTemplate MakeMessageBoxTemplate(const MessageBoxContent& content, std::uint32_t style, const MessageBoxLayout& layout,
                                        const MessageBoxMetrics& metrics) {
  constexpr std::uint32_t kDialogStyle = 0x90C80880;  // popup, visible, caption, system menu, modal frame, centred
  constexpr std::uint32_t kSystemModal = 0x02;
  constexpr std::uint32_t kShownChild = 0x50000000;
  constexpr std::uint32_t kTabStop = 0x00010000;
  constexpr std::uint32_t kDefaultPushButton = 0x01;
  constexpr std::uint32_t kOwnerDrawStatic = 0x0D;
  constexpr std::uint32_t kNoPrefix = 0x80;

  CXDialogTemplate box(kDialogStyle | ((style & kMbSystemModal) != 0 ? kSystemModal : 0),
                       ToDialogUnits({0, 0, layout.client.width, layout.client.height}, metrics), content.caption);
  if (IconOfStyle(style) != MessageBoxIcon::kNone) {
    box.Add({kStaticClassAtom, kShownChild | kOwnerDrawStatic, 0, ToDialogUnits(layout.icon, metrics), kMessageBoxIconId, L""});
  }
  box.Add(
      {kStaticClassAtom, kShownChild | kNoPrefix, 0, ToDialogUnits(layout.text, metrics), kMessageBoxTextId, content.message});
  const auto buttons = ButtonsOfStyle(style).buttons;
  const std::size_t defaultButton = DefaultButtonOfStyle(style, buttons.size());
  for (std::size_t i = 0; i < buttons.size(); ++i) {
    const std::uint32_t kind = i == defaultButton ? kDefaultPushButton : 0;
    box.Add({kButtonClassAtom, kShownChild | kTabStop | kind, 0, ToDialogUnits(layout.buttons[i], metrics), buttons[i].id,
             content.labels[i]});
  }
  return box;
}

std::wstring MessageBoxCopyText(const MessageBoxContent& content) {
  constexpr std::size_t kMostChars = 8192;
  constexpr std::size_t kMostCaption = 1000;
  constexpr std::size_t kMostMessage = 4000;
  constexpr std::size_t kMostLabel = 199;
  const std::wstring line = std::wstring(27, L'-') + L"\r\n";

  std::wstring text =
      line + content.caption.substr(0, kMostCaption) + L"\r\n" + line + content.message.substr(0, kMostMessage) + L"\r\n" + line;
  for (const std::wstring& label : content.labels) {
    std::wstring plain = label.substr(0, kMostLabel);
    std::erase(plain, L'&');
    text += plain + L"   ";
  }
  text += L"\r\n" + line;
  text.resize(std::min(text.size(), kMostChars));
  return text;
}
