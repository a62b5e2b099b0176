#pragma once

#include <tinyxml.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace Zelv::Infrastructure::Testing {

/// Makes documents and expressions that have much in common with each other, so that many match.
/// What is made follows from the numbers that the source gives, and from nothing else.
class XPathGenerator {
 public:
  /// Gives a number below its argument, which is at least 1.
  using Source = std::function<unsigned(unsigned)>;

  explicit XPathGenerator(Source aSource) : mSource(std::move(aSource)) {}

  void fill(TiXmlDocument& aDocument) {
    if (chance(4)) {
      aDocument.LinkEndChild(new TiXmlDeclaration("1.0", "", ""));
    }
    if (chance(8)) {
      aDocument.LinkEndChild(new TiXmlComment("c"));
    }
    element(aDocument, 5);
    if (chance(8)) {
      element(aDocument, 1);
    }
  }

  /// An expression of the kinds that are walked directly.
  std::string directExpression() {
    if (chance(6)) {
      return blanks() + "//" + namedStep(false) + behindDescendants();
    }
    std::string text = blanks() + (chance(10) ? "" : "/") + namedStep(true);
    for (unsigned more = mSource(4); more > 0; --more) {
      text += slash() + (chance(12) ? parentStep() : pair());
    }
    return text + lastStep();
  }

  std::string name() { return names[mSource(names.size())]; }
  std::string attributeName() { return attributes[mSource(attributes.size())]; }
  unsigned below(unsigned aBound) { return mSource(aBound); }

 private:
  static constexpr std::array<char const*, 5> names = {"a", "b", "Name", "u:x", "Service"};
  static constexpr std::array<char const*, 3> attributes = {"ID", "x", "src"};
  static constexpr std::array<char const*, 16> values = {"1",    "2",    "x",   "-3",  "1.5", " 7 ",
                                                         "",     "abc",  "1e3", "999", "0.1", "-",
                                                         "10.0", "y<&z", "a",   "Name"};

  bool chance(unsigned aOneIn) { return mSource(aOneIn) == 0; }
  std::string value() { return values[mSource(values.size())]; }
  std::string blanks() { return chance(12) ? " \t" : ""; }
  std::string slash() { return blanks() + "/" + blanks(); }

  void element(TiXmlNode& aParent, unsigned aDepth) {
    auto* const made = new TiXmlElement(name());
    aParent.LinkEndChild(made);
    for (std::string const attribute : attributes) {
      if (chance(2)) {
        made->SetAttribute(attribute, value());
      }
    }
    for (unsigned count = mSource(6); count > 0; --count) {
      child(*made, aDepth);
    }
  }

  void child(TiXmlElement& aParent, unsigned aDepth) {
    unsigned const kind = mSource(16);
    if (kind < 9 && aDepth > 0) {
      element(aParent, aDepth - 1);
    } else if (kind < 14) {
      auto* const text = new TiXmlText(value());
      text->SetCDATA(chance(4));
      aParent.LinkEndChild(text);
    } else if (kind == 14) {
      aParent.LinkEndChild(new TiXmlComment(value().c_str()));
    } else {
      aParent.LinkEndChild(new TiXmlUnknown());
    }
  }

  std::string literal() {
    std::string const quote = chance(2) ? "'" : "\"";
    return quote + value() + quote;
  }

  std::string number() {
    static std::array<char const*, 9> const numbers = {"1",  "2",   "7",   "1.5", ".1",
                                                       "5.", "999", "007", "1000"};
    return (chance(6) ? "-" : "") + std::string(numbers[mSource(numbers.size())]);
  }

  std::string relation() {
    static std::array<char const*, 6> const operations = {"=", "!=", "<", ">", "<=", ">="};
    return blanks() + operations[mSource(operations.size())] + blanks() +
           (chance(3) ? number() : literal());
  }

  std::string test() {
    unsigned const kind = mSource(8);
    std::string const subject = kind < 4 ? "@" + attributeName() : (kind < 7 ? "text()" : name());
    return subject + (chance(4) ? "" : relation());
  }

  std::string predicate(bool aPositions) {
    if (aPositions && chance(3)) {
      return "[" + std::to_string(mSource(5)) + "]";
    }
    return "[" + blanks() + test() + (chance(8) ? " and " + test() : "") + blanks() + "]";
  }

  std::string predicates(bool aPositions) {
    std::string text;
    while (chance(5)) {
      text += predicate(aPositions);
    }
    return text;
  }

  std::string namedStep(bool aPositions) {
    return (chance(3) ? name() : "*") + blanks() + predicates(aPositions);
  }

  std::string parentStep() { return "parent::*" + predicates(true); }

  /// A step down, or a child that is tested and the way back up, as the dialect is rewritten.
  std::string pair() {
    return chance(3) ? (chance(2) ? "*" : name()) + "[text()" + relation() + "]/parent::*"
                     : namedStep(true);
  }

  std::string behindDescendants() {
    std::string text;
    for (unsigned more = mSource(3); more > 0; --more) {
      text += slash() + pair();
    }
    return text + lastStep();
  }

  std::string lastStep() {
    switch (mSource(6)) {
      case 0:
        return "/text()";
      case 1:
        return "/node()";
      case 2:
        return "/@" + attributeName();
      default:
        return "";
    }
  }

  Source mSource;
};

}  // namespace Zelv::Infrastructure::Testing
