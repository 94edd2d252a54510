#pragma once

// Random rules and damaged bytes for property tests; the same seed gives the same on every machine of one character width.

#include <array>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include "core/records.h"
#include "storage/rule_numbers.h"

class Generator {
 public:
  explicit Generator(std::uint32_t seed) : random_(seed) {}

  std::size_t Below(std::size_t bound) { return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_); }
  bool OneIn(std::size_t count) { return Below(count) == 0; }

  /// Text out of pieces that formats trip over, at most `maxChars` long.
  std::wstring Pattern(std::size_t maxChars) {
    using namespace std::string_literals;
    static const std::array<std::wstring, 24> kPieces = {
        L"*",  L"?",  L".exe", L"\"", L"\",\"", L",",      L"\\",     L"\\u0041", L"\n",     L"\r", L"\t",         L" ",
        L"\v", L"}{", L"\x1A", L"-1", L"\0"s,   L"\xD83D", L"\xDE00", L"\uFEFF",  L"\u2028", L"ä",  L"\U0001F600", L"\"rules\""};
    std::wstring text;
    const std::size_t wanted = OneIn(8) ? maxChars : Below(12);
    while (text.size() < wanted) text += kPieces[Below(kPieces.size())];
    text.resize(std::min(text.size(), maxChars));
    return text;
  }

  /// Memory and CPU figures have one decimal, so that the text formats keep them.
  ThresholdRule Rule(std::uint32_t ruleId, std::size_t maxPatternChars) {
    ThresholdRule rule;
    rule.ruleId = ruleId;
    rule.processPattern = Pattern(maxPatternChars);
    rule.enabled = OneIn(2);
    rule.maxHandles = Number();
    rule.maxWorkingSet = OneIn(8) ? std::numeric_limits<std::uint64_t>::max() : BytesFromMegabytes(Tenths());
    rule.maxPrivateBytes = BytesFromMegabytes(Tenths());
    rule.maxCpuPercent = OneIn(8) ? std::numeric_limits<double>::lowest() : -Tenths();
    rule.maxThreads = Number();
    rule.maxGdiObjects = Number();
    rule.maxUserObjects = Number();
    rule.alertActions = Number();
    rule.cooldownSec = Number();
    return rule;
  }

  /// Replaces, drops, doubles or inserts a few bytes, or cuts the end off.
  std::string Damage(std::string bytes) {
    static const std::string kBytes("\0\x1A\r\n\t,\"\\-e9\xC3\xED\xFE\xFF", 15);
    for (std::size_t count = Below(8); count > 0 && !bytes.empty(); --count) {
      const std::size_t at = Below(bytes.size());
      if (OneIn(20)) bytes.resize(at);
      std::string piece(OneIn(40) ? 3000 : 1, kBytes[Below(kBytes.size())]);
      if (OneIn(4)) piece = bytes.substr(at, Below(200));
      bytes.replace(at, OneIn(2) ? Below(20) : 0, piece);
    }
    return bytes;
  }

 private:
  std::uint32_t Number() {
    static constexpr std::array<std::uint32_t, 4> kEdges = {0, 1, 0x7FFFFFFF, 0xFFFFFFFF};
    return OneIn(2) ? kEdges[Below(kEdges.size())] : static_cast<std::uint32_t>(Below(100'000));
  }
  double Tenths() { return static_cast<double>(Below(OneIn(3) ? 100'000'000'000 : 5000)) / 10.0; }

  std::mt19937 random_;
};
