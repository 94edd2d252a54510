#pragma once

// Menu items, buttons and what they do, as rows of a table.

#include <windows.h>

#include <span>

template <class Target>
struct CommandRow {
  WORD id;
  void (*run)(Target& target);
};

/// Runs the row of the id; false when it is in no row.
template <class Target>
bool RunCommand(Target& target, std::span<const CommandRow<Target>> rows, WORD id) {
  for (const auto& row : rows) {
    if (row.id != id) continue;
    row.run(target);
    return true;
  }
  return false;
}
