// The provider beside a plainly written model of it, on random paths and random calls.

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "zelv/core/testing/AssetProviderTest.h"

namespace Zelv {
namespace {

using Testing::AssetProviderTest;
using Provider = Core::AssetProvider;

class Dice {
 public:
  explicit Dice(unsigned aSeed) : mEngine(aSeed) {}

  std::size_t below(std::size_t aBound) { return mEngine() % aBound; }

  template <typename T>
  T const& oneOf(std::vector<T> const& aChoices) {
    return aChoices[below(aChoices.size())];
  }

 private:
  std::mt19937 mEngine;
};

// Classification, character by character.

struct Answer {
  Provider::TargetPackage target;
  std::string key;
  bool operator==(Answer const&) const = default;
};

bool isOneOf(char aCharacter, std::string const& aSet) {
  return aSet.find(aCharacter) != std::string::npos;
}

std::string betweenQuotes(std::string const& aText) {
  std::string inner;
  char quote = 0;
  for (char const character : aText) {
    if (quote == 0) {
      quote = isOneOf(character, "'\"") ? character : '\0';
    } else if (character == quote) {
      break;
    } else {
      inner += character;
    }
  }
  return inner;
}

Answer classify(std::string const& aPath) {
  std::size_t boundary = 1;
  while (boundary < aPath.size() && !isOneOf(aPath[boundary], "/[")) {
    ++boundary;
  }
  if (boundary >= aPath.size()) {
    return {Provider::FAIL_READ_PACKAGE, ""};
  }
  if (aPath.substr(1, boundary - 1) != "AssetPackage") {
    return {Provider::NOT_A_PACKAGE, ""};
  }
  if (aPath[boundary] == '/') {
    return {Provider::NOSPEC_PACKAGE, ""};
  }
  std::size_t end = boundary;
  while (end < aPath.size() && !isOneOf(aPath[end], "]/")) {
    ++end;
  }
  if (end == aPath.size()) {
    return {Provider::NOSPEC_PACKAGE, ""};
  }
  for (std::size_t at = boundary; at < end; ++at) {
    if (aPath.substr(at, 5) == "@name") {
      return {Provider::NAMED_PACKAGE, betweenQuotes(aPath.substr(at))};
    }
  }
  return {Provider::NOSPEC_PACKAGE, ""};
}

TEST(AssetPathModel, ClassifiesRandomPathsAsThePlainModel) {
  std::vector<std::string> const pieces = {"/",
                                           "[",
                                           "]",
                                           "'",
                                           "\"",
                                           "AssetPackage",
                                           "@name",
                                           "@ID",
                                           "=",
                                           "x",
                                           "Foo",
                                           "text()",
                                           "/AssetPackage[@name='",
                                           "']/",
                                           "//",
                                           " and ",
                                           "*",
                                           "/AssetPackage"};
  Dice dice(11);
  std::map<Provider::TargetPackage, int> seen;
  for (int round = 0; round < 50000; ++round) {
    std::string path = dice.below(2) == 0 ? "/AssetPackage" : "";
    for (std::size_t count = dice.below(9); count > 0; --count) {
      path += dice.oneOf(pieces);
    }
    std::string key;
    Provider::TargetPackage const target = Provider::m_ExtractTargetPackageType(path, key);
    ASSERT_EQ((Answer{target, key}), classify(path)) << path;
    ++seen[target];
  }
  // All but the one that does not occur.
  EXPECT_EQ(seen.size(), 4U);
  EXPECT_EQ(seen.count(Provider::IDDEF_PACKAGE), 0U);
}

// Calls.

/// What a provider holds, for documents whose root has children "a", "b" and "c" with a text, or
/// lacks them.
class Model {
 public:
  using Document = std::map<std::string, std::string>;

  explicit Model(Document aMain) : mMain(std::move(aMain)) {}

  std::string readMain(std::string const& aElement) const { return textIn(mMain, aElement); }

  std::string read(std::string const& aPackage, std::string const& aElement) const {
    auto const package = mPackages.find(aPackage);
    return package == mPackages.end() ? "" : textIn(package->second, aElement);
  }

  std::string readAll(std::string const& aElement) const {
    std::string all;
    for (auto const& [name, document] : mPackages) {
      std::string const text = textIn(document, aElement);
      if (!text.empty()) {
        all += (all.empty() ? "" : "&#x13;") + text;
      }
    }
    return all;
  }

  int writeMain(std::string const& aElement, std::string const& aText) {
    return write(mMain, aElement, aText);
  }

  int write(std::string const& aPackage, std::string const& aElement, std::string const& aText) {
    if (aText.empty()) {
      return unload(aPackage);
    }
    auto const package = mPackages.find(aPackage);
    return package == mPackages.end() ? -1 : write(package->second, aElement, aText);
  }

  int load(std::string const& aAsked, std::string const& aNamed, Document const& aDocument) {
    if (mPackages.contains(aAsked)) {
      return -1;
    }
    mPackages.emplace(aNamed, aDocument);
    return 0;
  }

  int unload(std::string const& aPackage) { return mPackages.erase(aPackage) > 0 ? 0 : -1; }

 private:
  static std::string textIn(Document const& aDocument, std::string const& aElement) {
    auto const element = aDocument.find(aElement);
    return element == aDocument.end() ? "" : element->second;
  }

  static int write(Document& aDocument, std::string const& aElement, std::string const& aText) {
    auto const element = aDocument.find(aElement);
    if (element == aDocument.end()) {
      return -1;
    }
    element->second = aText;
    return 0;
  }

  Document mMain;
  std::map<std::string, Document> mPackages;
};

class AssetProviderModel : public AssetProviderTest {
 protected:
  static std::string xml(Model::Document const& aDocument) {
    std::string text;
    for (auto const& [element, value] : aDocument) {
      text += "<" + element + ">" + value + "</" + element + ">";
    }
    return text;
  }

  Model::Document document() {
    Model::Document result;
    for (std::string const& element : elements) {
      if (dice.below(3) != 0) {
        result[element] = dice.oneOf(values);
      }
    }
    return result;
  }

  void step(Model& aModel) {
    std::string const package = dice.oneOf(packages);
    std::string const element = dice.oneOf(elements);
    std::string const value = dice.oneOf(values);
    std::string const step = "/AssetPackage[@name='" + package + "']";
    std::string const leaf = "/" + element + "/text()";
    switch (dice.below(8)) {
      case 0:
      case 1: {
        std::string const named = dice.oneOf(packages);
        Model::Document const content = document();
        EXPECT_EQ(write(step, packageText(named, xml(content))),
                  aModel.load(package, named, content));
        break;
      }
      case 2:
        EXPECT_EQ(write(step, ""), aModel.unload(package));
        break;
      case 3:
        EXPECT_EQ(write(step + leaf, value), aModel.write(package, element, value));
        break;
      case 4:
        EXPECT_EQ(write(leaf, value), aModel.writeMain(element, value));
        break;
      case 5:
        EXPECT_EQ(write("/AssetPackage" + leaf, value), -1);
        break;
      case 6:
        EXPECT_EQ(write("/AssetPackage[@ID='id of " + package + "']" + leaf, value), -1);
        break;
      default:
        EXPECT_EQ(write("/" + element, value), 0);
        break;
    }
  }

  void compare(Model const& aModel) {
    for (std::string const& element : elements) {
      std::string const leaf = "/" + element + "/text()";
      EXPECT_EQ(read(leaf), aModel.readMain(element));
      EXPECT_EQ(read("/AssetPackage" + leaf), aModel.readAll(element));
      for (std::string const& package : packages) {
        EXPECT_EQ(read("/AssetPackage[@name='" + package + "']" + leaf),
                  aModel.read(package, element));
        EXPECT_EQ(read("/AssetPackage[@ID='id of " + package + "']" + leaf),
                  aModel.read(package, element));
      }
    }
  }

  Dice dice{4450};
  std::vector<std::string> const packages = {"one", "two", "three"};
  std::vector<std::string> const elements = {"a", "b", "c"};
  std::vector<std::string> const values = {"x", "y", "some text", ""};
};

TEST_F(AssetProviderModel, AnswersRandomCallsAsThePlainModel) {
  for (int round = 0; round < 30; ++round) {
    Model::Document const main = document();
    Model model(main);
    run(xml(main));
    write("/AssetPackage[@name='test']", "");
    for (int count = 0; count < 20 && !HasFailure(); ++count) {
      step(model);
      compare(model);
    }
    log.clear();
  }
}

}  // namespace
}  // namespace Zelv
