#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "apps/zelvctl/MultipartReader.h"

namespace ZelvCtl {

/// Writes down what a reader tells, so that two of them can be held against each other. However a
/// file is cut, it is one.
class MultipartRecord : public MultipartReader::Listener {
 public:
  void onText(std::string const& aText) override { mText += "text[" + aText + "]"; }
  void onFile(MultipartReader::Part const& aPart) override {
    mText +=
        "file(" + aPart.id + "|" + aPart.type + "|" + std::to_string(aPart.size.value()) + ")[";
  }
  void onFileData(std::string_view aBytes) override { mText += aBytes; }
  void onFileEnd() override { mText += "]"; }

  /// Reads an answer in pieces. @return what was told, and how it ended.
  template <typename Pieces>
  static std::string of(std::string const& aBoundary, Pieces const& aPieces) {
    MultipartRecord record;
    MultipartReader reader(aBoundary, record);
    try {
      for (std::string_view const piece : aPieces) {
        reader.read(piece);
      }
    } catch (MultipartReader::Malformed const&) {
      return record.mText + " malformed";
    }
    return record.mText + (reader.isComplete() ? " complete" : " open");
  }

  static std::string ofOnePiece(std::string const& aBoundary, std::string_view aAnswer) {
    return of(aBoundary, std::array{aAnswer});
  }

  static std::string ofTwoPieces(std::string const& aBoundary, std::string_view aAnswer,
                                 std::size_t aCut) {
    return of(aBoundary, std::array{aAnswer.substr(0, aCut), aAnswer.substr(aCut)});
  }

  static std::string ofSingleBytes(std::string const& aBoundary, std::string_view aAnswer) {
    MultipartRecord record;
    MultipartReader reader(aBoundary, record);
    try {
      for (std::size_t at = 0; at < aAnswer.size(); ++at) {
        reader.read(aAnswer.substr(at, 1));
      }
    } catch (MultipartReader::Malformed const&) {
      return record.mText + " malformed";
    }
    return record.mText + (reader.isComplete() ? " complete" : " open");
  }

 private:
  std::string mText;
};

/// The same, of an answer that is there as a whole.
class MultipartModel {
 public:
  static std::string of(std::string const& aBoundary, std::string_view aAnswer) {
    MultipartModel model(aBoundary, aAnswer);
    model.read();
    return model.mText + model.mEnd;
  }

 private:
  MultipartModel(std::string const& aBoundary, std::string_view aAnswer)
      : mDelimiter("--" + aBoundary), mRest(aAnswer) {}

  void read() {
    while (mEnd.empty() && passGap() && passLineEnd()) {
      readPart();
    }
  }

  bool end(char const* aHow) {
    mEnd = aHow;
    return false;
  }

  /// True behind a delimiter.
  bool passGap() {
    if (mAtDelimiterEnd) {
      mAtDelimiterEnd = false;
      return true;
    }
    std::size_t gap = 0;
    while (gap < mRest.size() && gap < MultipartReader::MaxGap &&
           (mRest[gap] == '\r' || mRest[gap] == '\n')) {
      ++gap;
    }
    mRest.remove_prefix(gap);
    if (mRest.starts_with(mDelimiter)) {
      mRest.remove_prefix(mDelimiter.size());
      return true;
    }
    return end(std::string_view(mDelimiter).starts_with(mRest) ? " open" : " malformed");
  }

  /// True at the head of a part.
  bool passLineEnd() {
    std::string_view const two = mRest.substr(0, 2);
    if (two == "--") {
      return end(" complete");
    }
    if (two == "\r\n") {
      mRest.remove_prefix(2);
      return true;
    }
    return end(two.empty() || two == "-" || two == "\r" ? " open" : " malformed");
  }

  void readPart() {
    std::size_t const found = mRest.starts_with("\r\n") ? 0 : mRest.find("\r\n\r\n") + 2;
    bool const isWhole = found == 0 || mRest.find("\r\n\r\n") != std::string_view::npos;
    if (!isWhole || found + 2 > MultipartReader::MaxHead) {
      end(mRest.size() >= MultipartReader::MaxHead ? " malformed" : " open");
      return;
    }
    std::string_view const head = mRest.substr(0, found);
    mRest.remove_prefix(found + 2);
    std::string const size = field(head, "content-length");
    if (!areFieldsRight(head) || !isSize(size)) {
      end(" malformed");
    } else if (size.empty()) {
      readText();
    } else {
      readFile(head, std::stoull(size));
    }
  }

  static bool isSize(std::string const& aSize) {
    bool const isNumber = aSize.find_first_not_of("0123456789") == std::string::npos;
    std::string const digits = aSize.substr(std::min(aSize.find_first_not_of('0'), aSize.size()));
    std::string const most = "9223372036854775807";
    return isNumber &&
           (digits.size() < most.size() || (digits.size() == most.size() && digits <= most));
  }

  /// Every line has a name, and each that counts comes once at most, with a value.
  static bool areFieldsRight(std::string_view aHead) {
    std::array<int, 3> counts{};
    while (!aHead.empty()) {
      std::string_view const line = aHead.substr(0, aHead.find("\r\n"));
      aHead.remove_prefix(line.size() + 2);
      if (line.find(':') == std::string_view::npos || line.starts_with(':')) {
        return false;
      }
      std::array<char const*, 3> const names = {"content-length", "content-id", "content-type"};
      for (std::size_t which = 0; which < names.size(); ++which) {
        if (nameOf(line) == names[which] && (++counts[which] > 1 || valueOf(line).empty())) {
          return false;
        }
      }
    }
    return true;
  }

  static std::string nameOf(std::string_view aLine) {
    std::string name(aLine.substr(0, aLine.find(':')));
    for (char& letter : name) {
      letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
    }
    return name;
  }

  static std::string valueOf(std::string_view aLine) {
    std::string value(aLine.substr(aLine.find(':') + 1));
    while (!value.empty() && (value.front() == ' ' || value.front() == '\t')) {
      value.erase(0, 1);
    }
    while (!value.empty() && (value.back() == ' ' || value.back() == '\t')) {
      value.pop_back();
    }
    return value;
  }

  static std::string field(std::string_view aHead, std::string const& aName) {
    while (!aHead.empty()) {
      std::string_view const line = aHead.substr(0, aHead.find("\r\n"));
      aHead.remove_prefix(line.size() + 2);
      if (nameOf(line) == aName) {
        return valueOf(line);
      }
    }
    return "";
  }

  void readText() {
    std::string const delimiter = "\r\n" + mDelimiter;
    auto const found = mRest.find(delimiter);
    if (found == std::string_view::npos) {
      end(mRest.size() > MultipartReader::MaxText + delimiter.size() - 1 ? " malformed" : " open");
    } else if (found > MultipartReader::MaxText) {
      end(" malformed");
    } else {
      mText += "text[" + std::string(mRest.substr(0, found)) + "]";
      mRest.remove_prefix(found + delimiter.size());
      mAtDelimiterEnd = true;
    }
  }

  void readFile(std::string_view aHead, unsigned long long aSize) {
    mText += "file(" + field(aHead, "content-id") + "|" + field(aHead, "content-type") + "|" +
             std::to_string(aSize) + ")[";
    mText += mRest.substr(0, aSize);
    if (mRest.size() < aSize) {
      end(" open");
      return;
    }
    mText += "]";
    mRest.remove_prefix(aSize);
  }

  std::string const mDelimiter;
  std::string_view mRest;
  bool mAtDelimiterEnd = false;
  std::string mText;
  std::string mEnd;
};

}  // namespace ZelvCtl
