// A new identifier as text beside the system call and a table of hex digits.

#include <benchmark/benchmark.h>
#include <sys/random.h>

#include <string>

#include "zelv/infrastructure/GUID.h"

namespace {

void getrandomWithTable(benchmark::State& aState) {
  static char const digits[] = "0123456789abcdef";
  for (auto _ : aState) {
    unsigned char bytes[16];
    if (getrandom(bytes, sizeof bytes, 0) != sizeof bytes) {
      aState.SkipWithError("no random bytes");
      break;
    }
    std::string text(36, '-');
    std::size_t at = 0;
    for (unsigned char const byte : bytes) {
      if (at == 8 || at == 13 || at == 18 || at == 23) {
        ++at;
      }
      text[at++] = digits[byte >> 4];
      text[at++] = digits[byte & 15];
    }
    benchmark::DoNotOptimize(text.data());
  }
}

void createWithToString(benchmark::State& aState) {
  for (auto _ : aState) {
    std::string text = Zelv::Infrastructure::GUID::createGUID().toString();
    benchmark::DoNotOptimize(text.data());
  }
}

BENCHMARK(getrandomWithTable);
BENCHMARK(createWithToString);

}  // namespace
