#include "app/console_arguments.h"

#include <charconv>
#include <string_view>

namespace {

struct NumberOption {
  std::string_view name;
  std::uint64_t min;
  std::uint64_t max;
  void (*store)(ConsoleArguments& arguments, std::uint64_t value);
};

constexpr NumberOption kNumberOptions[] = {
    {"--interval", 1, 86'400,
     [](ConsoleArguments& arguments, std::uint64_t value) { arguments.intervalSec = static_cast<std::uint32_t>(value); }},
    {"--cycles", 0, UINT64_MAX, [](ConsoleArguments& arguments, std::uint64_t value) { arguments.cycles = value; }},
};

const NumberOption* FindOption(std::string_view name) {
  for (const NumberOption& option : kNumberOptions) {
    if (option.name == name) return &option;
  }
  return nullptr;
}

bool ParseNumber(std::string_view text, const NumberOption& option, std::uint64_t& value) {
  const auto [end, result] = std::from_chars(text.data(), text.data() + text.size(), value);
  return result == std::errc() && end == text.data() + text.size() && value >= option.min && value <= option.max;
}

}  // namespace

std::optional<ConsoleArguments> ParseConsoleArguments(std::span<const char* const> arguments, std::string& error) {
  ConsoleArguments parsed;
  bool rulesFileGiven = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string_view argument = arguments[i];
    if (argument == "--help" || argument == "-h") {
      parsed.help = true;
    } else if (const NumberOption* option = FindOption(argument)) {
      std::uint64_t value = 0;
      if (i + 1 == arguments.size() || !ParseNumber(arguments[i + 1], *option, value)) {
        error =
            std::string(argument) + " needs a number from " + std::to_string(option->min) + " to " + std::to_string(option->max);
        return std::nullopt;
      }
      option->store(parsed, value);
      ++i;
    } else if (argument.starts_with("-") || argument.empty() || rulesFileGiven) {
      error = "unexpected argument '" + std::string(argument) + "'";
      return std::nullopt;
    } else {
      parsed.rulesFile = argument;
      rulesFileGiven = true;
    }
  }
  return parsed;
}
