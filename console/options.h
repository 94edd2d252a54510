#pragma once

// The command line of the console companion. One table gives parsing, --help and the manual page.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct Options {
  enum class Color { kAuto, kAlways, kNever };

  std::string rulesFile;          ///< UTF-8; empty: the user's own
  std::uint32_t intervalSec = 0;  ///< 1 to 86,400; 0: not given
  bool once = false;
  std::uint64_t cycles = 0;  ///< 0: until told to end
  std::vector<std::string> exclude;
  bool json = false;
  std::string logFile;
  std::string metricsFile;
  bool list = false;
  bool validate = false;
  Color color = Color::kAuto;
  bool verbose = false;
  bool help = false;
  bool version = false;
  bool manual = false;  ///< print the manual page's source, for the package
};

/// `arguments` without the program's own name. Empty, with a line for the user in `error`, when they make no sense.
[[nodiscard]] std::optional<Options> ParseOptions(std::span<const std::string> arguments, std::string& error);

[[nodiscard]] std::string HelpText();
/// In the markup of man(7).
[[nodiscard]] std::string ManualPage();
