#include "zelv/infrastructure/StringSearch.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <string_view>

namespace Zelv::Infrastructure {

namespace {

using Node = StringSearch::s_node;

/// The child, among the first aCount of the root's, that has the byte; null without.
Node* amongFirst(Node const& aRoot, std::size_t aCount, char aByte) {
  std::size_t const count = std::min(aCount, aRoot.children.size());
  for (std::size_t i = 0; i < count; ++i) {
    if (aRoot.children[i]->value == aByte) {
      return aRoot.children[i];
    }
  }
  return nullptr;
}

Node* firstChild(Node const& aNode, char aByte) {
  return amongFirst(aNode, aNode.children.size(), aByte);
}

/// A pattern that was inserted twice has two children of one value; a search takes the later one.
Node* lastChild(Node const& aNode, char aByte) {
  for (auto child = aNode.children.rbegin(); child != aNode.children.rend(); ++child) {
    if ((*child)->value == aByte) {
      return *child;
    }
  }
  return nullptr;
}

void insert(Node& aRoot, std::string const& aPattern) {
  Node* current = &aRoot;
  for (char const byte : aPattern) {
    Node* next = amongFirst(aRoot, current->children.size(), byte);
    if (next == nullptr) {
      auto made = std::make_unique<Node>(current, byte);
      current->children.push_back(made.get());
      next = made.release();
    }
    current = next;
  }
  current->outputs.push_back(aPattern);
}

/// While the tree is made the root fails to nothing, which ends the way up.
void setFailure(Node& aRoot, Node& aNode) {
  for (Node const* from = aNode.parent->fail; from != nullptr; from = from->fail) {
    if (Node* const node = firstChild(*from, aNode.value)) {
      aNode.fail = node;
      aNode.outputs.insert(aNode.outputs.end(), node->outputs.begin(), node->outputs.end());
      return;
    }
  }
  aNode.fail = &aRoot;
}

void setFailures(Node& aRoot) {
  std::vector<Node*> level;
  for (Node* const child : aRoot.children) {
    child->fail = &aRoot;
    level.insert(level.end(), child->children.begin(), child->children.end());
  }
  while (!level.empty()) {
    std::vector<Node*> next;
    for (Node* const node : level) {
      setFailure(aRoot, *node);
      next.insert(next.end(), node->children.begin(), node->children.end());
    }
    level.swap(next);
  }
  aRoot.fail = &aRoot;
}

Node const* step(Node const& aRoot, Node const* aState, char aByte) {
  for (;;) {
    if (Node const* const next = lastChild(*aState, aByte)) {
      return next;
    }
    if (aState == &aRoot) {
      return aState;
    }
    aState = aState->fail;
  }
}

/// One pattern makes a tree of one branch, which finds what any search finds, only slower.
int findOne(std::string const& aPattern, std::string_view aText) {
  std::size_t const found = aText.find(aPattern);
  return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

}  // namespace

StringSearch::s_node::s_node(s_node* aParent, char aValue)
    : value(aValue), parent(aParent), fail(nullptr) {}

StringSearch::s_node::~s_node() {
  std::vector<s_node*> open;
  open.swap(children);
  while (!open.empty()) {
    std::unique_ptr<s_node> const node(open.back());
    open.pop_back();
    std::move(node->children.begin(), node->children.end(), std::back_inserter(open));
    node->children.clear();
  }
}

StringSearch::s_node* StringSearch::m_BuildTree(std::vector<std::string> const& aPatterns) {
  auto root = std::make_unique<s_node>(nullptr, '\0');
  for (std::string const& pattern : aPatterns) {
    insert(*root, pattern);
  }
  setFailures(*root);
  return root.release();
}

int StringSearch::FindFirst(std::vector<std::string> const& aPatterns, char const* aText,
                            unsigned int aLength) {
  if (aPatterns.size() == 1 && !aPatterns.front().empty()) {
    return findOne(aPatterns.front(), std::string_view(aText, aLength));
  }
  std::unique_ptr<s_node const> const root(m_BuildTree(aPatterns));
  s_node const* state = root.get();
  for (unsigned int i = 0; i < aLength; ++i) {
    state = step(*root, state, aText[i]);
    if (!state->outputs.empty()) {
      return static_cast<int>(i + 1 - state->outputs.front().size());
    }
  }
  return -1;
}

unsigned int StringSearch::FindAll(std::vector<std::string> const& aPatterns, char const* aText,
                                   unsigned int aLength,
                                   std::vector<std::pair<std::string, unsigned int>>& aMatches) {
  std::unique_ptr<s_node const> const root(m_BuildTree(aPatterns));
  s_node const* state = root.get();
  for (unsigned int i = 0; i < aLength; ++i) {
    state = step(*root, state, aText[i]);
    for (std::string const& pattern : state->outputs) {
      aMatches.emplace_back(pattern, static_cast<unsigned int>(i + 1 - pattern.size()));
    }
  }
  return 1;
}

}  // namespace Zelv::Infrastructure
