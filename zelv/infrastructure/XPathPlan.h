#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Zelv::Infrastructure {

/// One predicate of a step that is walked directly: a position, or a test of something that the
/// candidate holds.
struct XPathTest {
  enum class Of : std::uint8_t { Position, Attribute, Text, Child };
  enum class By : std::uint8_t {
    Presence,
    EqualText,
    UnequalText,
    Equal,
    Unequal,
    Less,
    Greater,
    LessOrEqual,
    GreaterOrEqual
  };

  Of of = Of::Position;
  By by = By::Presence;
  std::string_view name;     ///< of the attribute or the child
  std::string_view literal;  ///< for EqualText and UnequalText
  double number = 0;         ///< the position, or what is compared with
};

/// One step of an expression that is walked directly.
struct XPathStep {
  enum class Axis : std::uint8_t {
    Child,
    Descendant,  ///< "//" and the step behind it
    Parent,
    Text,
    Node,
    Attribute
  };

  Axis axis = Axis::Child;
  bool anyName = false;
  bool hasPosition = false;    ///< whether a test is one of position
  bool firstSuffices = false;  ///< whether more than one match under one node adds nothing
  std::uint8_t firstTest = 0;
  std::uint8_t testCount = 0;
  std::string_view name;
};

/// An expression that is walked directly: steps and tests in flat arrays. The views point into the
/// text that it was parsed from.
struct XPathPlan {
  static constexpr std::size_t maximumSteps = 32;
  static constexpr std::size_t maximumTests = 16;

  bool absolute = false;
  std::uint8_t stepCount = 0;
  std::uint8_t testCount = 0;
  std::array<XPathStep, maximumSteps> steps;
  std::array<XPathTest, maximumTests> tests;
};

}  // namespace Zelv::Infrastructure
