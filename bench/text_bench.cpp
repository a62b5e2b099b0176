// The text helpers on one MiB beside one pass of memcpy.

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "zelv/infrastructure/XMLSerializer.h"
#include "zelv/infrastructure/XPath.h"

namespace {

using Zelv::Infrastructure::XMLSerializer;
using Zelv::Infrastructure::XPath;

constexpr std::size_t mebibyte = 1024 * 1024;

std::string repeated(std::string const& aPiece) {
  std::string text;
  while (text.size() < mebibyte) {
    text += aPiece;
  }
  return text;
}

void memcpyPass(benchmark::State& aState) {
  std::string const from = repeated("x");
  std::string to(from.size(), '\0');
  for (auto _ : aState) {
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::DoNotOptimize(to.data());
  }
}

void unescape(benchmark::State& aState) {
  std::string const text = repeated("&amp;lt;");
  std::string result;
  for (auto _ : aState) {
    XMLSerializer::unescapeXMLEntities(text, result);
    benchmark::DoNotOptimize(result.data());
  }
}

void removePredicates(benchmark::State& aState) {
  std::string const text = repeated("/a[@ID='b']");
  for (auto _ : aState) {
    benchmark::DoNotOptimize(XPath::removePredicates(text));
  }
}

void otherHelpers(benchmark::State& aState) {
  std::string const text = repeated("/a[@ID='b']");
  std::string prefix;
  for (auto _ : aState) {
    benchmark::DoNotOptimize(XPath::removeAttributeStep(text));
    benchmark::DoNotOptimize(XPath::removeTextStep(text));
    benchmark::DoNotOptimize(XPath::getFirstPredicate(text, prefix));
    benchmark::DoNotOptimize(XPath::getLastStep(text));
  }
}

BENCHMARK(memcpyPass)->Unit(benchmark::kMillisecond);
BENCHMARK(unescape)->Unit(benchmark::kMillisecond);
BENCHMARK(removePredicates)->Unit(benchmark::kMillisecond);
BENCHMARK(otherHelpers)->Unit(benchmark::kMillisecond);

}  // namespace
