#include "ui/dark/delay_import_slot.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace {

// Offsets and values of the documented image format.
constexpr std::uint16_t kDosMagic = 0x5A4D;        // "MZ"
constexpr std::uint64_t kNewHeaderField = 0x3C;    // in the DOS header: where the signature stands
constexpr std::uint32_t kImageSignature = 0x4550;  // "PE\0\0"
constexpr std::uint64_t kOptionalHeader = 24;      // from the signature
constexpr std::uint16_t kMagic64 = 0x020B;
constexpr std::uint64_t kDirectoryCount = 108;  // in the optional header
constexpr std::uint64_t kDirectories = 112;     // in the optional header
constexpr std::uint32_t kDelayImportDirectory = 13;
constexpr std::uint64_t kDirectorySize = 8;
constexpr std::uint64_t kOrdinalFlag = std::uint64_t{1} << 63;
constexpr std::uint32_t kAddressesAreRelative = 1;
constexpr std::uint64_t kSlotSize = 8;

struct DelayDescriptor {
  std::uint32_t attributes;
  std::uint32_t libraryName;
  std::uint32_t moduleHandle;
  std::uint32_t addressTable;
  std::uint32_t nameTable;
  std::uint32_t boundTable;
  std::uint32_t unloadTable;
  std::uint32_t timeStamp;
};
static_assert(sizeof(DelayDescriptor) == 32);

/// Reads values at offsets that may lie anywhere; whatever does not lie wholly inside is absent.
class ImageReader {
 public:
  explicit ImageReader(std::span<const std::byte> image) : image_(image) {}

  template <class Value>
  [[nodiscard]] std::optional<Value> Read(std::uint64_t offset) const {
    if (!Holds(offset, sizeof(Value))) return std::nullopt;
    Value value;
    std::memcpy(&value, image_.data() + offset, sizeof(Value));
    return value;
  }

  [[nodiscard]] bool Holds(std::uint64_t offset, std::uint64_t size) const {
    return offset <= image_.size() && size <= image_.size() - offset;
  }

  /// The terminated text at the offset, compared without regard to ASCII case.
  [[nodiscard]] bool TextIs(std::uint64_t offset, std::string_view text) const {
    if (!Holds(offset, text.size() + 1)) return false;
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    const auto* stored = reinterpret_cast<const char*>(image_.data() + offset);
    return std::equal(text.begin(), text.end(), stored, [&](char a, char b) { return lower(a) == lower(b); }) &&
           stored[text.size()] == '\0';
  }

 private:
  std::span<const std::byte> image_;
};

struct Directory {
  std::uint32_t offset;
  std::uint32_t size;
};

std::optional<Directory> FindDelayDirectory(const ImageReader& image) {
  if (image.Read<std::uint16_t>(0) != kDosMagic) return std::nullopt;
  const auto header = image.Read<std::uint32_t>(kNewHeaderField);
  if (!header || image.Read<std::uint32_t>(*header) != kImageSignature) return std::nullopt;
  const std::uint64_t optional = std::uint64_t{*header} + kOptionalHeader;
  if (image.Read<std::uint16_t>(optional) != kMagic64) return std::nullopt;
  const auto count = image.Read<std::uint32_t>(optional + kDirectoryCount);
  if (!count || *count <= kDelayImportDirectory) return std::nullopt;
  const auto directory = image.Read<Directory>(optional + kDirectories + kDelayImportDirectory * kDirectorySize);
  return directory && directory->offset != 0 ? directory : std::nullopt;
}

std::optional<DelayDescriptor> FindDescriptor(const ImageReader& image, const Directory& directory, std::string_view library) {
  for (std::uint64_t at = 0; at + sizeof(DelayDescriptor) <= directory.size; at += sizeof(DelayDescriptor)) {
    const auto descriptor = image.Read<DelayDescriptor>(directory.offset + at);
    if (!descriptor || descriptor->libraryName == 0) return std::nullopt;
    if ((descriptor->attributes & kAddressesAreRelative) != 0 && image.TextIs(descriptor->libraryName, library))
      return descriptor;
  }
  return std::nullopt;
}

}  // namespace

std::size_t FindDelayImportSlot(std::span<const std::byte> bytes, std::string_view library, std::uint16_t ordinal) {
  const ImageReader image(bytes);
  const auto directory = FindDelayDirectory(image);
  if (!directory) return 0;
  const auto descriptor = FindDescriptor(image, *directory, library);
  if (!descriptor || descriptor->nameTable == 0 || descriptor->addressTable == 0) return 0;

  for (std::uint64_t index = 0;; ++index) {
    const auto name = image.Read<std::uint64_t>(descriptor->nameTable + index * kSlotSize);
    if (!name || *name == 0) return 0;
    if ((*name & kOrdinalFlag) == 0 || (*name & 0xFFFF) != ordinal) continue;
    const std::uint64_t slot = descriptor->addressTable + index * kSlotSize;
    return image.Holds(slot, kSlotSize) ? static_cast<std::size_t>(slot) : 0;
  }
}
