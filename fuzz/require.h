#pragma once

// What a fuzz target holds to be true of every input. A broken one ends the program, which the fuzzer reports with the input.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

inline std::string_view Bytes(const std::uint8_t* data, std::size_t size) { return {reinterpret_cast<const char*>(data), size}; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
