#include "console/options.h"

#include <charconv>
#include <string_view>

#include "product_config.h"

namespace {

template <class Number>
bool ParseNumber(std::string_view text, Number lowest, Number highest, Number& number) {
  const auto [end, result] = std::from_chars(text.data(), text.data() + text.size(), number);
  return result == std::errc() && end == text.data() + text.size() && number >= lowest && number <= highest;
}

bool ParseColor(std::string_view text, Options& options) {
  constexpr std::string_view kNames[] = {"auto", "always", "never"};
  for (int index = 0; index < 3; ++index) {
    if (text != kNames[index]) continue;
    options.color = static_cast<Options::Color>(index);
    return true;
  }
  return false;
}

struct OptionRow {
  std::string_view name;
  std::string_view argument;  ///< empty: takes none
  std::string_view help;
  bool (*apply)(Options& options, std::string_view value);  ///< false: no such value
};

template <bool Options::*Flag>
bool Set(Options& options, std::string_view) {
  options.*Flag = true;
  return true;
}

template <std::string Options::*Path>
bool SetPath(Options& options, std::string_view value) {
  options.*Path = value;
  return !value.empty();
}

constexpr OptionRow kOptions[] = {
    {"--rules", "FILE", "rules to watch by: rules.csv or exported JSON (the user's own rules.csv; without one, built-in rules)",
     SetPath<&Options::rulesFile>},
    {"--interval", "SECONDS", "time between two cycles, 1 to 86400 (30; 1 with --once and --list)",
     [](Options& options, std::string_view value) { return ParseNumber(value, 1U, 86'400U, options.intervalSec); }},
    {"--once", "", "take two samples an interval apart, report, and end", Set<&Options::once>},
    {"--cycles", "N", "end after N cycles",
     [](Options& options, std::string_view value) { return ParseNumber(value, std::uint64_t{1}, UINT64_MAX, options.cycles); }},
    {"--exclude", "PATTERN", "apply no rule to processes of this name; may be given again",
     [](Options& options, std::string_view value) {
       options.exclude.emplace_back(value);
       return !value.empty();
     }},
    {"--json", "", "print each alert as one JSON object", Set<&Options::json>},
    {"--log", "FILE", "append each alert to FILE as the program does to its log", SetPath<&Options::logFile>},
    {"--metrics", "FILE", "keep FILE up to date for the textfile collector of a metrics exporter",
     SetPath<&Options::metricsFile>},
    {"--list", "", "print the watched processes with their figures, nearest to a ceiling first, and end", Set<&Options::list>},
    {"--validate", "", "say what in the rules file is dropped or changed when it is read, and end", Set<&Options::validate>},
    {"--color", "WHEN", "auto, always or never (auto)",
     [](Options& options, std::string_view value) { return ParseColor(value, options); }},
    {"--verbose", "", "write diagnostic lines to standard error", Set<&Options::verbose>},
    {"--help", "", "print this and end", Set<&Options::help>},
    {"--version", "", "print the version and end", Set<&Options::version>},
};

constexpr std::string_view kSynopsis = "vantora-console [OPTION]...";
constexpr std::string_view kDescription =
    "Watches the processes of this machine by a list of rules and reports each one that exceeds a ceiling: open handles, working "
    "set, "
    "private bytes, CPU, threads, GDI or USER objects.";
constexpr std::string_view kExitCodes = "0 nothing was reported, 1 something was, 2 the options or the rules make no sense.";

const OptionRow* FindOption(std::string_view name) {
  for (const OptionRow& row : kOptions) {
    if (row.name == name) return &row;
  }
  return nullptr;
}

/// For man(7): a hyphen of its own is a minus, and a backslash would begin an escape.
std::string ManualText(std::string_view text) {
  std::string escaped;
  for (const char character : text) {
    if (character == '-' || character == '\\') escaped += '\\';
    escaped += character;
  }
  return escaped;
}

}  // namespace

std::optional<Options> ParseOptions(std::span<const std::string> arguments, std::string& error) {
  Options options;
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    const std::string& argument = arguments[index];
    if (argument == "--man") {  // for the package's build; no user needs it
      options.manual = true;
      continue;
    }
    const OptionRow* row = FindOption(argument);
    if (row == nullptr) {
      error = "unexpected argument '" + argument + "'";
      return std::nullopt;
    }
    std::string_view value;
    if (!row->argument.empty()) {
      if (index + 1 < arguments.size()) value = arguments[++index];
    }
    if (!row->apply(options, value)) {
      error = argument + " needs " + std::string(row->argument) + ": " + std::string(row->help);
      return std::nullopt;
    }
  }
  if (options.once && options.cycles != 0) {
    error = "--once and --cycles exclude each other";
    return std::nullopt;
  }
  return options;
}

std::string HelpText() {
  std::string text = "usage: " + std::string(kSynopsis) + "\n\n" + std::string(kDescription) + "\n\n";
  for (const OptionRow& row : kOptions) {
    std::string left = "  " + std::string(row.name) + (row.argument.empty() ? "" : " ") + std::string(row.argument);
    left.resize(std::max<std::size_t>(left.size() + 2, 22), ' ');
    text += left + std::string(row.help) + "\n";
  }
  return text + "\nExit codes: " + std::string(kExitCodes) + "\n";
}

std::string ManualPage() {
  std::string text = ".TH VANTORA\\-CONSOLE 1 \"\" \"Vantora " VANTORA_VERSION_STRING "\" \"User Commands\"\n";
  text += ".SH NAME\nvantora\\-console \\- watch processes and report what exceeds a limit\n";
  text +=
      ".SH SYNOPSIS\n.B vantora\\-console\n[\\fIOPTION\\fR]...\n.SH DESCRIPTION\n" + ManualText(kDescription) + "\n.SH OPTIONS\n";
  for (const OptionRow& row : kOptions) {
    text += ".TP\n.B " + ManualText(row.name) + (row.argument.empty() ? "" : " \\fI" + std::string(row.argument) + "\\fR") + "\n";
    text += ManualText(row.help) + "\n";
  }
  text += ".SH EXIT STATUS\n" + ManualText(kExitCodes) + "\n";
  text += ".SH FILES\n.TP\n.I ~/.config/vantora/rules.csv\nthe user's rules, or below $XDG_CONFIG_HOME\n";
  return text + ".TP\n.I /usr/share/doc/vantora\\-console/examples\nrules to start from\n";
}
