#pragma once

#include <cstddef>
#include <cstdint>

/// What every fuzz target defines (https://llvm.org/docs/LibFuzzer.html): tries one input. Returns
/// 0; ends the process on a finding. Keeps nothing between two calls.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize);
