#pragma once

// The arguments of the console companion.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

struct ConsoleArguments {
  std::string rulesFile = "rules.csv";  ///< as the system gave it, UTF-8
  std::uint32_t intervalSec = 30;       ///< 1 to 86,400
  std::uint64_t cycles = 0;             ///< 0: until told to end
  bool help = false;

  bool operator==(const ConsoleArguments&) const = default;
};

/// `arguments` without the program's own name. Empty, with a line for the user in `error`, when they make no sense.
[[nodiscard]] std::optional<ConsoleArguments> ParseConsoleArguments(std::span<const char* const> arguments, std::string& error);
