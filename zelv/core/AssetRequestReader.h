#pragma once

#include <string>

#include "zelv/infrastructure/HTTPDocument.h"
#include "zelv/infrastructure/HTTPParser.h"

namespace Zelv {

class AssetConnection;

/// Reads one HTTP request from a connection, and finds the text of the asset request in it.
class AssetRequestReader {
 public:
  enum Outcome {
    Complete,
    Refused,  ///< getStatusText() tells why
    Ended,    ///< the client has gone before its headers were complete
  };

  /// Waits for the request as long as the client sends it.
  Outcome read(AssetConnection& aConnection);

  std::string const& getStatusText() const { return mParser.getStatusText(); }
  std::string const& getMethod() const { return mDocument.GetRequest().GetMethod(); }

  bool isGet() const { return getMethod() == "GET"; }

  /// True for the methods that are served.
  bool isMethodAllowed() const;

  /// The text that holds the asset request: for a GET, of any URI, the one that asks for the
  /// picture of the built-in package; for a POST its body, up to the first zero byte.
  std::string text() const;

 private:
  Infrastructure::HTTPParser mParser;
  Infrastructure::HTTPDocument mDocument;
};

}  // namespace Zelv
