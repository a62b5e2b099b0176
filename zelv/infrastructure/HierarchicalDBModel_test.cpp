// The store against a plainly written document of the test's own, over random reads and writes.

#include <gtest/gtest.h>

#include <list>
#include <random>
#include <string>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/testing/LittleDocument.h"
#include "zelv/platform/fake/FakeLog.h"

namespace Zelv::Infrastructure {
namespace {

using Platform::Fake::LogCapture;
using Testing::LittleDocument;
using Node = LittleDocument::Node;
using Path = LittleDocument::Path;
using Step = LittleDocument::Step;
using Steps = LittleDocument::Steps;
using Test = LittleDocument::Test;

/// Makes paths and values from few words, so that they meet.
class Generator {
 public:
  explicit Generator(unsigned aSeed) : mRandom(aSeed) {}

  unsigned below(unsigned aBound) { return mRandom() % aBound; }

  std::string name() { return std::string(1, "abcd"[below(4)]); }
  std::string attributeName() { return std::string(1, "xyz"[below(3)]); }

  /// A value that may stand in a predicate.
  std::string plainValue() {
    static char const* const values[] = {"1", "2", "7", "12", "-3", "word"};
    return values[below(std::size(values))];
  }

  std::string value() {
    static char const* const values[] = {"<",     "a&b",        "&amp;",   "&amp;lt;", "&lt;",
                                         "it's",  "say \"hi\"", "&#x13;",  "&#x1",     "1<2>",
                                         "&quot", "&amp;quot;", "one two", "\xC3\xA9", "&"};
    return below(2) == 0 ? plainValue() : values[below(std::size(values))];
  }

  /// Of all predicates of a path only the last may compare a child.
  Steps steps(unsigned aMost) {
    Steps steps{{"r", {}}};
    unsigned const count = below(aMost + 1);
    unsigned const last = below(count + 1);
    for (unsigned index = 0; index < count; ++index) {
      Step step{below(4) == 0 ? "*" : name(), {}};
      if (index == last) {
        step.test = test(step.name);
      } else if (index < last && below(3) == 0) {
        step.test = simpleTest(step.name);
      }
      steps.push_back(step);
    }
    return steps;
  }

  Path path() {
    Path path;
    path.steps = steps(3);
    path.last = static_cast<Path::Last>(below(5));
    path.attribute = attributeName();
    return path;
  }

  std::list<Node> nodes(unsigned aDepth) {
    std::list<Node> result;
    for (unsigned count = 1 + below(2); count > 0; --count) {
      result.push_back(element(aDepth));
    }
    return result;
  }

 private:
  Test test(std::string const& aStep) {
    Test result;
    result.kind = static_cast<Test::Kind>(below(7));
    if (result.kind <= Test::Attribute) {
      return simpleTest(aStep);
    }
    result.number = static_cast<int>(below(10));
    result.name = name();
    result.value = plainValue();
    result.name2 = result.kind == Test::ChildAndAttribute ? attributeName() : name();
    result.value2 = plainValue();
    return result;
  }

  /// One that the path's rewriting leaves alone; positions are for "*" only.
  Test simpleTest(std::string const& aStep) {
    Test result;
    if (aStep == "*" && below(2) == 0) {
      result.kind = Test::Position;
      result.number = 1 + static_cast<int>(below(3));
    } else {
      result.kind = Test::Attribute;
      result.name = attributeName();
      result.value = plainValue();
    }
    return result;
  }

  Node element(unsigned aDepth) {
    Node node;
    node.name = name();
    for (char const attribute : {'x', 'y', 'z'}) {
      if (below(3) == 0) {
        node.attributes.emplace_back(std::string(1, attribute), value());
      }
    }
    for (unsigned count = below(4); count > 0; --count) {
      bool const behindText = !node.children.empty() && node.children.back().isText;
      if (below(2) == 0 && !behindText) {
        node.children.push_back({true, value(), {}, {}});
      } else if (aDepth > 0) {
        node.children.push_back(element(aDepth - 1));
      }
    }
    return node;
  }

  std::mt19937 mRandom;
};

class HierarchicalDBModel : public testing::Test {
 protected:
  /// One document's life; aOperations operations on both.
  void run(unsigned aSeed, int aOperations) {
    LogCapture quiet;
    Generator generator(aSeed);
    HierarchicalDB database;
    LittleDocument model("r");
    ASSERT_EQ(database.loadFromString("<r/>"), 0);
    for (int turn = 0; turn < aOperations; ++turn) {
      change(generator, database, model);
      read(generator, database, model);
      read(generator, database, model);
      std::string xml;
      ASSERT_EQ(database.serialize(xml, -1), 0);
      ASSERT_EQ(xml, model.xml()) << "seed " << aSeed << ", " << mLast;
    }
  }

  void change(Generator& aGenerator, HierarchicalDB& aDatabase, LittleDocument& aModel) {
    Steps const steps = aGenerator.steps(2);
    std::string const path = LittleDocument::textOf(steps);
    bool const create = aGenerator.below(2) == 0;
    switch (aGenerator.below(8)) {
      case 0:
      case 1: {
        std::string const value = aGenerator.value();
        mLast = "text of " + path;
        expectSame(aDatabase.setContent(path + "/text()", value, create),
                   aModel.setText(steps, value));
        break;
      }
      case 2:
      case 3: {
        std::string const name = aGenerator.attributeName();
        std::string const value = aGenerator.value();
        mLast = "@" + name + " of " + path;
        expectSame(aDatabase.setContent(path + "/@" + name, value, create),
                   aModel.setAttribute(steps, name, value, create));
        break;
      }
      case 4:
        mLast = "without " + path;
        expectSame(aDatabase.setContent(path, "", create), aModel.setElements(steps, {}));
        break;
      default: {
        std::list<Node> const nodes = aGenerator.nodes(2);
        mLast = "nodes of " + path;
        expectSame(aDatabase.setContent(path, LittleDocument::sourceOf(nodes), create),
                   aModel.setElements(steps, nodes));
      }
    }
  }

  void read(Generator& aGenerator, HierarchicalDB& aDatabase, LittleDocument& aModel) {
    Path const path = aGenerator.path();
    std::string const text = LittleDocument::textOf(path);
    auto const [code, content] = aModel.get(path);
    std::string result = "from before";
    ASSERT_EQ(aDatabase.getContent(text, result), code) << text << " in " << aModel.xml();
    ASSERT_EQ(result, content) << text << " in " << aModel.xml();
    mFound += code == 0 ? 1 : 0;
  }

  void expectSame(int aCode, int aExpected) {
    EXPECT_EQ(aCode, aExpected) << mLast;
    mChanged += aExpected == 0 ? 1 : 0;
  }

  std::string mLast;
  int mFound = 0;
  int mChanged = 0;
};

TEST_F(HierarchicalDBModel, AgreesOverRandomReadsAndWrites) {
  constexpr unsigned cDocuments = 5000;
  for (unsigned seed = 1; seed <= cDocuments && !HasFailure(); ++seed) {
    run(seed, 10);
  }
  // The paths must not all miss.
  EXPECT_GT(mFound, 15000);
  EXPECT_GT(mChanged, 15000);
}

}  // namespace
}  // namespace Zelv::Infrastructure
