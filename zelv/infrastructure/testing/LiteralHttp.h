#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace Zelv::Infrastructure::Testing {

/// How the pieces of a request are understood, written down plainly. The oracle of HTTPParser.
class LiteralHttp {
 public:
  /// @return true while more is wanted.
  bool read(std::string const& aPiece) {
    remaining -= static_cast<long>(aPiece.size());
    if (!headersComplete) {
      return readHeaders(aPiece);
    }
    if (aPiece.empty() && remaining > 0) {
      return refuse("400 Bad Request");
    }
    return readBody(aPiece);
  }

  bool refused = false;
  std::string statusText = "202 Accepted";
  std::string method;
  std::map<std::string, std::string> headers;
  bool hasBody = false;
  std::string body;

 private:
  static std::string trim(std::string const& aText) {
    std::size_t begin = 0;
    std::size_t end = aText.size();
    while (begin < end && isBlank(aText[begin])) {
      ++begin;
    }
    while (end > begin && isBlank(aText[end - 1])) {
      --end;
    }
    return aText.substr(begin, end - begin);
  }

  static bool isBlank(char aByte) {
    return aByte == ' ' || aByte == '\t' || aByte == '\r' || aByte == '\n';
  }

  /// The parts that are not empty, with an empty one behind them.
  static std::vector<std::string> parts(std::string const& aText, std::string const& aSeparators) {
    std::vector<std::string> found;
    std::string part;
    for (char const byte : aText + aSeparators[0]) {
      if (aSeparators.find(byte) == std::string::npos) {
        part += byte;
      } else if (!part.empty()) {
        found.push_back(trim(part));
        part.clear();
      }
    }
    found.emplace_back();
    found.emplace_back();
    return found;
  }

  bool refuse(char const* aText) {
    refused = true;
    statusText = aText;
    return false;
  }

  bool readHeaders(std::string const& aPiece) {
    std::size_t const before = header.size();
    header += aPiece;
    std::size_t const begin = before > 4 ? before - 4 : 0;
    std::string const searched = header.substr(begin, aPiece.size() + (before > 4 ? 4 : 0));
    std::size_t const found = searched.find("\r\n\r\n");
    std::size_t const length = found == std::string::npos ? header.size() : begin + found;
    if (length > 65536) {
      return refuse("400 Bad Request");
    }
    if (found == std::string::npos) {
      return true;
    }
    if (!readLines(header.substr(0, begin + found))) {
      return refuse("400 Bad Request");
    }
    headersComplete = true;
    return beginBody(aPiece, found + (begin == 0 ? 4 : 0));
  }

  bool readLines(std::string const& aText) {
    std::size_t position = aText.find("\r\n");
    method = parts(aText.substr(0, position), " \t").front();
    if (method.empty()) {
      return false;
    }
    while (position != std::string::npos) {
      std::size_t const next = aText.find("\r\n", position + 2);
      std::string const line =
          aText.substr(position + 2, next == std::string::npos ? next : next - position - 2);
      position = next;
      if (trim(line).empty()) {
        continue;
      }
      std::vector<std::string> const words = parts(line, ":");
      if (words[0].empty()) {
        return false;
      }
      headers.emplace(words[0], words[1]);
    }
    return true;
  }

  std::string valueOf(std::string const& aName) const {
    auto const found = headers.find(aName);
    return found == headers.end() ? "" : found->second;
  }

  bool beginBody(std::string const& aPiece, std::size_t aBegin) {
    std::string const type = valueOf("Content-Type");
    if (headers.count("Host") == 0) {
      return false;
    }
    if (type.find('/') == std::string::npos) {
      hasBody = true;
      return false;
    }
    bool const isKnown = headers.count("Content-Length") != 0;
    long const length = std::strtol(valueOf("Content-Length").c_str(), nullptr, 10);
    if (type.substr(0, type.find('/')) == "multipart" ||
        valueOf("Transfer-Encoding") == "chunked" || !isKnown || length > 524288) {
      return refuse("501 Not Implemented");
    }
    remaining = length;
    if (length < 1) {
      return false;
    }
    std::string const rest = aBegin >= aPiece.size() ? "" : aPiece.substr(aBegin);
    remaining -= static_cast<long>(rest.size());
    return rest.empty() || readBody(rest);
  }

  bool readBody(std::string const& aPiece) {
    stored += aPiece;
    if (remaining > 0) {
      return true;
    }
    hasBody = true;
    body = stored.substr(0, stored.size() - static_cast<std::size_t>(-remaining));
    return false;
  }

  std::string header;
  std::string stored;
  bool headersComplete = false;
  long remaining = 0;
};

}  // namespace Zelv::Infrastructure::Testing
