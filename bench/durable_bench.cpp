// A change that is on the storage when the call ends, beside the bare sequence and SQLite.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "bench/Set.h"
#include "zelv/core/GenericDataProvider.h"

#ifdef BENCH_SQLITE
#include <sqlite3.h>
#endif

namespace {

using Zelv::Bench::Set;

std::string content(std::string const& aPath) {
  std::ostringstream text;
  text << std::ifstream(aPath).rdbuf();
  return text.str();
}

bool writeBare(std::string const& aDirectory, std::string const& aText) {
  std::string const path = aDirectory + "bare.xml";
  std::string const temporary = path + ".tmp";
  int const file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  bool good = write(file, aText.data(), aText.size()) == ssize_t(aText.size()) && fsync(file) == 0;
  good = close(file) == 0 && good && rename(temporary.c_str(), path.c_str()) == 0;
  int const directory = open(aDirectory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  good = fsync(directory) == 0 && good;
  return close(directory) == 0 && good;
}

// The same bytes as the provider writes.
void bareSequence(benchmark::State& aState) {
  Set set;
  std::string const text = content(set.directory() + "Configuration.xml");
  for (auto _ : aState) {
    if (!writeBare(set.directory(), text)) {
      aState.SkipWithError("a write failed");
      break;
    }
  }
  aState.counters["bytes"] = double(text.size());
}

// The provider's part of setData, on this thread: what the worker does for each change.
void setData(benchmark::State& aState) {
  Set set;
  Zelv::Core::GenericDataProvider provider("/Zelv/Bench", set.directory() + "Configuration.xml",
                                           true);
  provider.onLifetime(Zelv::LIFETIME_INITIALISE, Zelv::GUID());
  long turn = 0;
  for (auto _ : aState) {
    if (provider.setData("/Configuration/UPnPDiscovery/text()", std::to_string(turn++ % 10),
                         Zelv::GUID()) != 0) {
      aState.SkipWithError("a write failed");
      break;
    }
  }
  provider.onLifetime(Zelv::LIFETIME_TERMINATE, Zelv::GUID());
}

#ifdef BENCH_SQLITE
void sqlite(benchmark::State& aState, char const* aJournal) {
  Set set;
  std::string const text = content(set.directory() + "Configuration.xml");
  sqlite3* database = nullptr;
  sqlite3_open((set.directory() + "bench.db").c_str(), &database);
  auto run = [&](std::string const& aSql) {
    return sqlite3_exec(database, aSql.c_str(), nullptr, nullptr, nullptr);
  };
  run(std::string("PRAGMA journal_mode=") + aJournal + "; PRAGMA synchronous=FULL;");
  run("CREATE TABLE file(name TEXT PRIMARY KEY, content TEXT)");
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(database, "REPLACE INTO file VALUES('Configuration.xml', ?)", -1, &statement,
                     nullptr);
  for (auto _ : aState) {
    sqlite3_bind_text(statement, 1, text.data(), int(text.size()), SQLITE_STATIC);
    if (sqlite3_step(statement) != SQLITE_DONE) {
      aState.SkipWithError(sqlite3_errmsg(database));
      break;
    }
    sqlite3_reset(statement);
  }
  sqlite3_finalize(statement);
  sqlite3_close(database);
}
BENCHMARK_CAPTURE(sqlite, rollback, "DELETE")->UseRealTime();
BENCHMARK_CAPTURE(sqlite, wal, "WAL")->UseRealTime();
#endif

BENCHMARK(bareSequence)->UseRealTime();
BENCHMARK(setData)->UseRealTime();

}  // namespace
