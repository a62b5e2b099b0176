#include "zelv/core/AssetResponse.h"

namespace Zelv {

namespace {

std::string delimiter(std::string const& aBoundary) {
  return "--" + aBoundary;
}

std::string page(std::string const& aStatusLine, std::string const& aStatus) {
  std::string const body = "<?xml version=\"1.0\"?>\n<error>" + aStatus + "</error>";
  return aStatusLine +
         "\r\n"
         "Content-Type: text/xml; charset=utf-8\r\n"
         "Content-Length: " +
         std::to_string(body.size()) +
         "\r\n"
         "Connection: close\r\n"
         "\r\n" +
         body;
}

}  // namespace

// The parameter is spelt as clients look for it, who take the boundary from behind that word.
std::string AssetResponse::head(std::string const& aStatus, std::string const& aBoundary) {
  return "HTTP/1.1 " + aStatus +
         "\r\n"
         "Content-Type: multipart/related; boundry=" +
         aBoundary +
         "\r\n"
         "Connection: close\r\n"
         "\r\n";
}

std::string AssetResponse::textPart(std::string const& aBoundary, std::string const& aText) {
  return delimiter(aBoundary) +
         "\r\n"
         "Content-Type: application/soap+xml; charset=utf-8\r\n"
         "Content-ID: AssetContents\r\n"
         "\r\n" +
         aText + "\r\n";
}

std::string AssetResponse::filePartHead(std::string const& aBoundary, std::string const& aMimeType,
                                        std::string const& aId, long long aSize) {
  return delimiter(aBoundary) + "\r\nContent-Type: " + aMimeType +
         "\r\n"
         "Content-Transfer-Encoding: Little-Endian\r\n"
         "Content-ID: " +
         aId + "\r\nContent-Length: " + std::to_string(aSize) + "\r\n\r\n";
}

std::string AssetResponse::filePartEnd(bool aLast) {
  return aLast ? "\r\n\r\n" : "\r\n";
}

std::string AssetResponse::closingDelimiter(std::string const& aBoundary) {
  return delimiter(aBoundary) + "--\r\n";
}

std::string AssetResponse::refusedPage(std::string const& aStatus) {
  return page("HTTP/1.1" + aStatus, aStatus);
}

std::string AssetResponse::methodNotAllowedPage() {
  return page("HTTP/1.1 405 Method Not Allowed", "405 Method Not Allowed");
}

std::string AssetResponse::badRequestPage() {
  return page("HTTP/1.1 400 Bad Request", "400 Bad Request");
}

}  // namespace Zelv
