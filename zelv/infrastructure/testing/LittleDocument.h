#pragma once

#include <cstdlib>
#include <list>
#include <string>
#include <utility>
#include <vector>

namespace Zelv::Infrastructure::Testing {

/// A document, its paths and its operations as plainly as they can be told and without regard for
/// speed: the oracle that the store is held against. Knows elements, attributes and texts.
class LittleDocument {
 public:
  struct Node {
    bool isText = false;
    std::string name;  ///< of an element; the value of a text
    std::vector<std::pair<std::string, std::string>> attributes;
    std::list<Node> children;
  };

  /// What an element must have besides its name.
  struct Test {
    enum Kind { None, Position, Attribute, Child, ChildBelow, ChildAndAttribute, TwoChildren };
    Kind kind = None;
    int number = 0;     ///< a position, or the bound of a child's value
    std::string name;   ///< of the attribute or the child
    std::string value;  ///< what that is equal to
    std::string name2;  ///< the same for the second condition
    std::string value2;
  };

  /// One step down.
  struct Step {
    std::string name;  ///< "*" for any
    Test test;
  };

  using Steps = std::vector<Step>;

  /// Steps down from the document, and what is wanted of the elements found there.
  struct Path {
    enum Last { Element, Text, Attribute, Names, Nodes };
    Steps steps;
    Last last = Element;
    std::string attribute;
  };

  /// The document "<ROOT/>".
  explicit LittleDocument(std::string const& aRoot) {
    mDocument.children.push_back({false, aRoot, {}, {}});
  }
  LittleDocument(LittleDocument const&) = delete;
  LittleDocument& operator=(LittleDocument const&) = delete;

  /// The result and the content.
  std::pair<int, std::string> get(Path const& aPath) {
    std::vector<Node*> const elements = find(aPath.steps);
    std::vector<std::string> items;
    for (Node const* element : elements) {
      addItems(aPath, *element, items);
    }
    if (items.empty()) {
      bool const isEmptyText = aPath.last == Path::Text && !elements.empty();
      return {isEmptyText ? 0 : -1, ""};
    }
    std::string all = items[0];
    for (std::size_t index = 1; index < items.size(); ++index) {
      all += "&#x13;" + items[index];
    }
    return {0, unescape(all)};
  }

  int setText(Steps const& aParent, std::string const& aValue) {
    std::vector<Node*> const targets = find(aParent);
    if (targets.empty()) {
      return -1;
    }
    for (Node& child : targets[0]->children) {
      if (child.isText) {
        child.name = aValue;
        return 0;
      }
    }
    targets[0]->children.push_back({true, aValue, {}, {}});
    return 0;
  }

  int setAttribute(Steps const& aParent, std::string const& aName, std::string const& aValue,
                   bool aCreate) {
    std::vector<Node*> const targets = find(aParent);
    if (targets.empty()) {
      return -1;
    }
    for (auto& [name, value] : targets[0]->attributes) {
      if (name == aName) {
        value = escape(aValue);
        return 0;
      }
    }
    if (!aCreate) {
      return -1;
    }
    targets[0]->attributes.emplace_back(aName, escape(aValue));
    return 0;
  }

  /// Takes out what the path finds, and adds nodes below the first match of all but its last step.
  int setElements(Steps const& aPath, std::list<Node> const& aNodes) {
    Steps const above(aPath.begin(), aPath.end() - 1);
    std::vector<Node*> const targets = find(above);
    if (targets.empty()) {
      return -1;
    }
    std::vector<Node*> const gone = find(aPath);
    for (Node* target : targets) {
      target->children.remove_if([&](Node const& aChild) {
        for (Node const* node : gone) {
          if (node == &aChild) {
            return true;
          }
        }
        return false;
      });
    }
    for (Node const& node : aNodes) {
      targets[0]->children.push_back(node);
    }
    return 0;
  }

  /// Compact XML of the whole document.
  std::string xml() const { return serialize(mDocument.children.front()); }

  /// A path in the system's dialect.
  static std::string textOf(Path const& aPath) {
    std::string text = textOf(aPath.steps);
    switch (aPath.last) {
      case Path::Text:
        return text + "/text()";
      case Path::Attribute:
        return text + "/@" + aPath.attribute;
      case Path::Names:
        return text + "/name()";
      case Path::Nodes:
        return text + "/node()";
      default:
        return text;
    }
  }

  static std::string textOf(Steps const& aSteps) {
    std::string text;
    for (Step const& step : aSteps) {
      text += "/" + step.name + textOf(step.test);
    }
    return text;
  }

  /// XML that is read as the nodes, whatever their texts hold.
  static std::string sourceOf(std::list<Node> const& aNodes) {
    std::string text;
    for (Node const& node : aNodes) {
      if (node.isText) {
        text += escapeAll(node.name);
        continue;
      }
      text += "<" + node.name;
      for (auto const& [name, value] : node.attributes) {
        text += " " + name + "=\"" + escapeAll(value) + "\"";
      }
      text += ">" + sourceOf(node.children) + "</" + node.name + ">";
    }
    return text;
  }

 private:
  static std::string quoted(std::string const& aValue) { return "='" + aValue + "'"; }

  static std::string textOf(Test const& aTest) {
    switch (aTest.kind) {
      case Test::Position:
        return "[" + std::to_string(aTest.number) + "]";
      case Test::Attribute:
        return "[@" + aTest.name + quoted(aTest.value) + "]";
      case Test::Child:
        return "[" + aTest.name + quoted(aTest.value) + "]";
      case Test::ChildBelow:
        return "[" + aTest.name + "<" + std::to_string(aTest.number) + "]";
      case Test::ChildAndAttribute:
        return "[" + aTest.name + quoted(aTest.value) + " and @" + aTest.name2 +
               quoted(aTest.value2) + "]";
      case Test::TwoChildren:
        return "[" + aTest.name + quoted(aTest.value) + " and " + aTest.name2 +
               quoted(aTest.value2) + "]";
      default:
        return "";
    }
  }

  static bool hasAttribute(Node const& aNode, std::string const& aName, std::string const& aValue) {
    for (auto const& [name, value] : aNode.attributes) {
      if (name == aName && value == aValue) {
        return true;
      }
    }
    return false;
  }

  /// The texts directly within the children of this name.
  static std::vector<std::string> textsOfChildren(Node const& aNode, std::string const& aName) {
    std::vector<std::string> texts;
    for (Node const& child : aNode.children) {
      for (Node const& text : child.children) {
        if (!child.isText && child.name == aName && text.isText) {
          texts.push_back(text.name);
        }
      }
    }
    return texts;
  }

  static bool hasChild(Node const& aNode, std::string const& aName, std::string const& aValue) {
    for (std::string const& text : textsOfChildren(aNode, aName)) {
      if (text == aValue) {
        return true;
      }
    }
    return false;
  }

  static bool hasChildBelow(Node const& aNode, std::string const& aName, int aBound) {
    for (std::string const& text : textsOfChildren(aNode, aName)) {
      char* end = nullptr;
      double const number = std::strtod(text.c_str(), &end);
      if (!text.empty() && *end == '\0' && number < aBound) {
        return true;
      }
    }
    return false;
  }

  static bool holds(Test const& aTest, Node const& aNode, int aPosition) {
    switch (aTest.kind) {
      case Test::Position:
        return aPosition == aTest.number;
      case Test::Attribute:
        return hasAttribute(aNode, aTest.name, aTest.value);
      case Test::Child:
        return hasChild(aNode, aTest.name, aTest.value);
      case Test::ChildBelow:
        return hasChildBelow(aNode, aTest.name, aTest.number);
      case Test::ChildAndAttribute:
        return hasChild(aNode, aTest.name, aTest.value) &&
               hasAttribute(aNode, aTest.name2, aTest.value2);
      case Test::TwoChildren:
        return hasChild(aNode, aTest.name, aTest.value) &&
               hasChild(aNode, aTest.name2, aTest.value2);
      default:
        return true;
    }
  }

  std::vector<Node*> find(Steps const& aSteps) {
    std::vector<Node*> found{&mDocument};
    for (Step const& step : aSteps) {
      std::vector<Node*> next;
      for (Node* node : found) {
        int position = 0;
        for (Node& child : node->children) {
          if (child.isText || (step.name != "*" && step.name != child.name)) {
            continue;
          }
          if (holds(step.test, child, ++position)) {
            next.push_back(&child);
          }
        }
      }
      found = next;
    }
    // The document itself is no match.
    return aSteps.empty() ? std::vector<Node*>() : found;
  }

  static void addItems(Path const& aPath, Node const& aElement, std::vector<std::string>& aItems) {
    if (aPath.last == Path::Element) {
      aItems.push_back(serialize(aElement));
    } else if (aPath.last == Path::Names) {
      aItems.push_back(aElement.name);
    } else if (aPath.last == Path::Attribute) {
      for (auto const& [name, value] : aElement.attributes) {
        if (name == aPath.attribute) {
          aItems.push_back(escape(value));
        }
      }
    } else {
      for (Node const& child : aElement.children) {
        if (child.isText || aPath.last == Path::Nodes) {
          aItems.push_back(serialize(child));
        }
      }
    }
  }

  static std::string serialize(Node const& aNode) {
    if (aNode.isText) {
      return escape(aNode.name);
    }
    std::string text = "<" + aNode.name;
    for (auto const& [name, value] : aNode.attributes) {
      std::string const escaped = escape(value);
      char const quote = escaped.find("&apos;") != std::string::npos ? '"' : '\'';
      text += " " + name + "=" + quote + escaped + quote;
    }
    if (aNode.children.empty()) {
      return text + "/>";
    }
    text += ">";
    for (Node const& child : aNode.children) {
      text += serialize(child);
    }
    return text + "</" + aNode.name + ">";
  }

  /// As the serialiser escapes: a reference in hexadecimal passes.
  static std::string escape(std::string const& aText) {
    std::string result;
    for (std::size_t at = 0; at < aText.size(); ++at) {
      if (aText.compare(at, 3, "&#x") == 0) {
        while (at + 1 < aText.size() && aText[at] != ';') {
          result += aText[at++];
        }
      }
      addEscaped(aText[at], result);
    }
    return result;
  }

  static std::string escapeAll(std::string const& aText) {
    std::string result;
    for (char const byte : aText) {
      addEscaped(byte, result);
    }
    return result;
  }

  static void addEscaped(char aByte, std::string& aResult) {
    switch (aByte) {
      case '&':
        aResult += "&amp;";
        break;
      case '<':
        aResult += "&lt;";
        break;
      case '>':
        aResult += "&gt;";
        break;
      case '"':
        aResult += "&quot;";
        break;
      case '\'':
        aResult += "&apos;";
        break;
      default:
        aResult += aByte;
    }
  }

  /// One entity after the other, each until none is left.
  static std::string unescape(std::string aText) {
    std::pair<std::string, std::string> const entities[] = {
        {"&quot;", "\""}, {"&amp;", "&"}, {"&apos;", "'"}, {"&lt;", "<"}, {"&gt;", ">"}};
    for (auto const& [entity, character] : entities) {
      for (auto at = aText.find(entity); at != std::string::npos; at = aText.find(entity)) {
        aText.replace(at, entity.size(), character);
      }
    }
    return aText;
  }

  Node mDocument;
};

}  // namespace Zelv::Infrastructure::Testing
