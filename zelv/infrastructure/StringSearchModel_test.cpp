#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "zelv/infrastructure/StringSearch.h"
#include "zelv/infrastructure/testing/LiteralSearch.h"

namespace {

using Zelv::Infrastructure::StringSearch;
using Zelv::Infrastructure::Testing::LiteralSearch;

std::string randomText(std::mt19937& aRandom, std::size_t aMost, int aLetters) {
  std::string text(aRandom() % (aMost + 1), '\0');
  for (char& byte : text) {
    byte = static_cast<char>('a' + static_cast<int>(aRandom() % static_cast<unsigned>(aLetters)));
  }
  return text;
}

TEST(StringSearchModel, FindsWhatTheTablesFind) {
  std::mt19937 random(12);
  for (int round = 0; round < 20000; ++round) {
    std::vector<std::string> patterns(random() % 6);
    for (std::string& pattern : patterns) {
      pattern = randomText(random, 4, 3);
    }
    std::string const text = randomText(random, 30, 3);
    auto const length = static_cast<unsigned int>(text.size());
    LiteralSearch const model(patterns);
    std::vector<std::pair<std::string, unsigned int>> matches;
    StringSearch::FindAll(patterns, text.data(), length, matches);
    ASSERT_EQ(matches, model.all(text)) << ::testing::PrintToString(patterns) << " in " << text;
    ASSERT_EQ(StringSearch::FindFirst(patterns, text.data(), length), model.first(text))
        << ::testing::PrintToString(patterns) << " in " << text;
  }
}

TEST(StringSearchModel, FindsOnePatternWhereverItIs) {
  std::mt19937 random(34);
  for (int round = 0; round < 20000; ++round) {
    std::string const pattern = randomText(random, 4, 2) + "a";
    std::string const text = randomText(random, 40, 2);
    std::size_t const expected = text.find(pattern);
    int const found =
        StringSearch::FindFirst({pattern}, text.data(), static_cast<unsigned int>(text.size()));
    ASSERT_EQ(found, expected == std::string::npos ? -1 : static_cast<int>(expected))
        << pattern << " in " << text;
  }
}

}  // namespace
