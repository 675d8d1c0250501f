#pragma once

// The entry point every fuzz target defines and libFuzzer (or ReplayMain.cpp) calls, with what
// the targets use around it: std::abort for a broken invariant, and the input as text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

inline std::string inputText(const uint8_t* data, size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}
