// Loading text beside TinyXML alone.

#include <benchmark/benchmark.h>
#include <tinyxml.h>

#include "bench/Documents.h"
#include "zelv/infrastructure/HierarchicalDB.h"

namespace {

using Zelv::Bench::Documents;

void tinyXml(benchmark::State& aState) {
  Documents const document(static_cast<std::size_t>(aState.range(0)) * 1024);
  for (auto _ : aState) {
    TiXmlDocument tree;
    tree.Parse(document.text().c_str(), nullptr, TIXML_ENCODING_UNKNOWN);
    benchmark::DoNotOptimize(tree.FirstChildElement());
  }
}

void loadFromString(benchmark::State& aState) {
  Documents const document(static_cast<std::size_t>(aState.range(0)) * 1024);
  for (auto _ : aState) {
    Zelv::Infrastructure::HierarchicalDB database;
    benchmark::DoNotOptimize(database.loadFromString(document.text()));
  }
}

BENCHMARK(tinyXml)->ArgName("KB")->Arg(2)->Arg(200);
BENCHMARK(loadFromString)->ArgName("KB")->Arg(2)->Arg(200);

}  // namespace
