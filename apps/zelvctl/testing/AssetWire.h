#pragma once

#include <string>

namespace ZelvCtl {

/// The bytes of an answer to a request for assets, as sets send them.
struct AssetWire {
  static constexpr char const* Boundary = "0c9a1de2-7f45-4f0b-8a6d-2f1b3c4d5e6f";

  static std::string contentType() { return std::string("multipart/related; boundry=") + Boundary; }

  static std::string head() {
    return "HTTP/1.1 202 Accepted\r\nContent-Type: " + contentType() +
           "\r\nConnection: close\r\n\r\n";
  }

  static std::string badRequest() {
    return "HTTP/1.1 400 Bad Request\r\nContent-Type: text/xml; charset=utf-8\r\n"
           "Content-Length: 52\r\nConnection: close\r\n\r\n"
           "<?xml version=\"1.0\"?>\n<error>400 Bad Request</error>";
  }

  static std::string text(std::string const& aText) {
    return delimiter() +
           "\r\nContent-Type: application/soap+xml; charset=utf-8\r\n"
           "Content-ID: AssetContents\r\n\r\n" +
           aText + "\r\n";
  }

  /// An answer that describes these assets.
  static std::string result(std::string const& aRequestId, std::string const& aAssets) {
    return text("<RequestContents requestID='" + aRequestId +
                "'><AssetContents type='asset' name='x' >" + aAssets +
                "</AssetContents></RequestContents>");
  }

  static std::string failure(std::string const& aRequestId) {
    return text("<RequestContents error='true' requestID='" + aRequestId + "' />");
  }

  static std::string asset(std::string const& aName, std::string const& aId,
                           std::string const& aSource) {
    return "<" + aName + " src='" + aSource + "' ID='" + aId + "'/>";
  }

  static std::string fileHead(std::string const& aId, unsigned long long aSize) {
    return delimiter() +
           "\r\nContent-Type: image/png\r\nContent-Transfer-Encoding: Little-Endian\r\n"
           "Content-ID: " +
           aId + "\r\nContent-Length: " + std::to_string(aSize) + "\r\n\r\n";
  }

  static std::string file(std::string const& aId, std::string const& aBytes) {
    return fileHead(aId, aBytes.size()) + aBytes + "\r\n";
  }

  static std::string lastFile(std::string const& aId, std::string const& aBytes) {
    return file(aId, aBytes) + "\r\n";
  }

  static std::string closing() { return delimiter() + "--\r\n"; }

  /// The identifier in a request.
  static std::string requestId(std::string const& aRequest) {
    std::string const begin = "<AssetRequest ID='";
    auto const at = aRequest.find(begin) + begin.size();
    return aRequest.substr(at, aRequest.find('\'', at) - at);
  }

 private:
  static std::string delimiter() { return std::string("--") + Boundary; }
};

}  // namespace ZelvCtl
