#include "apps/zelv-tv/Arguments.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "apps/zelv-tv/ValueText.h"

namespace ZelvTv {

namespace {

std::string unescaped(std::string_view aText) {
  auto text = ValueText::FromLine(aText);
  if (!text) {
    throw Arguments::Misuse(R"(a backslash in a value begins \n, \\ or \xHH)");
  }
  return *std::move(text);
}

}  // namespace

void Arguments::skipBlanks() {
  mRest.remove_prefix(std::min(mRest.find_first_not_of(' '), mRest.size()));
}

std::string Arguments::take(std::size_t aSize) {
  if (aSize == 0) {
    throw Misuse("an argument is missing");
  }
  std::string taken(mRest.substr(0, aSize));
  mRest.remove_prefix(aSize);
  return taken;
}

std::string Arguments::Word() {
  skipBlanks();
  return take(std::min(mRest.find(' '), mRest.size()));
}

std::string Arguments::Path() {
  skipBlanks();
  char quote = '\0';
  int depth = 0;
  std::size_t end = 0;
  for (; end < mRest.size(); ++end) {
    char const character = mRest[end];
    if (quote != '\0') {
      quote = character == quote ? '\0' : quote;
    } else if (character == '\'' || character == '"') {
      quote = character;
    } else if (character == '[') {
      ++depth;
    } else if (character == ']') {
      --depth;
    } else if (character == ' ' && depth <= 0) {
      break;
    }
  }
  return take(end);
}

std::string Arguments::Device() {
  skipBlanks();
  char const quote = mRest.empty() ? '\0' : mRest.front();
  if (quote == '\'' || quote == '"') {
    auto const end = mRest.find(quote, 1);
    if (end == std::string_view::npos) {
      throw Misuse("a quote is not closed");
    }
    std::string const quoted = take(end + 1);
    return unescaped(std::string_view(quoted).substr(1, end - 1));
  }
  return unescaped(Word());
}

unsigned Arguments::Milliseconds() {
  std::string const word = Word();
  unsigned value = 0;
  auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (error != std::errc() || end != word.data() + word.size()) {
    throw Misuse("'" + word + "' is no number of milliseconds");
  }
  return value;
}

std::string Arguments::Value() {
  if (mRest.empty()) {
    throw Misuse("a value is missing");
  }
  std::string value = unescaped(mRest.substr(1));
  mRest = {};
  return value;
}

void Arguments::End() {
  skipBlanks();
  if (!mRest.empty()) {
    throw Misuse("'" + std::string(mRest) + "' is too much");
  }
}

}  // namespace ZelvTv
