// Tries the seeds of a fuzz target without a fuzzer, so that the ordinary tests hold what was found
// once. usage: replay_TARGET FILE_OR_DIRECTORY...

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/Target.h"

namespace {

bool replay(std::filesystem::path const& aFile) {
  std::ifstream stream(aFile, std::ios::binary);
  std::string const bytes((std::istreambuf_iterator<char>(stream)), {});
  if (!stream) {
    std::fprintf(stderr, "%s cannot be read\n", aFile.c_str());
    return false;
  }
  // Said beforehand, so that the input of a crash is known.
  std::printf("%s\n", aFile.c_str());
  std::fflush(stdout);
  // A copy of exactly this size lets the sanitizers see every byte read beyond the end.
  std::vector<std::uint8_t> const exact(bytes.begin(), bytes.end());
  return LLVMFuzzerTestOneInput(exact.data(), exact.size()) == 0;
}

std::vector<std::filesystem::path> filesOf(std::filesystem::path const& aPath) {
  if (!std::filesystem::is_directory(aPath)) {
    return {aPath};
  }
  std::vector<std::filesystem::path> files;
  for (auto const& entry : std::filesystem::directory_iterator(aPath)) {
    files.push_back(entry.path());
  }
  return files;
}

}  // namespace

int main(int aCount, char** aArguments) {
  int tried = 0;
  for (int i = 1; i < aCount; ++i) {
    for (auto const& file : filesOf(aArguments[i])) {
      if (!replay(file)) {
        return 1;
      }
      ++tried;
    }
  }
  std::printf("%d seeds\n", tried);
  return tried > 0 ? 0 : 1;
}
