#include "zelv/core/AssetRequestReader.h"

#include <cerrno>

#include "zelv/adapter/SocketError.h"
#include "zelv/core/AssetConnection.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv {

using Infrastructure::HTTPParser;

namespace {

constexpr int pieceSize = 0x1fff;

constexpr char const* requestOfGet =
    "<Envelope>\n"
    "  <Header>\n"
    "    <MessageID>1d53b0ef-8fa8-4112-bd92-5c2c6d664dd0</MessageID>\n"
    "    <SenderID>9fae5f5f-2dba-4f6c-b3e7-5c88160f1d6e</SenderID>\n"
    "  </Header>\n"
    "  <Body>\n"
    "    <AssetRequest ID='e3035622-f6ff-46cb-ada6-64fb3b616f08'>\n"
    "      <Asset name='TVImage' />\n"
    "    </AssetRequest>\n"
    "  </Body>\n"
    "</Envelope>\n";

int receive(AssetConnection& aConnection, char* aBuffer) {
  int const size = aConnection.receive(aBuffer, pieceSize);
  if (size > 0) {
    aBuffer[size] = '\0';
  } else {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "AssetRequestHandler::startListener: Failed to receive TCP packet, "
                       "errno=%s.\n",
                       Adapter::socketErrorText(size < 0 ? errno : 0).c_str());
  }
  return size;
}

}  // namespace

AssetRequestReader::Outcome AssetRequestReader::read(AssetConnection& aConnection) {
  char buffer[pieceSize + 1];
  // The parser writes it on failure alone.
  HTTPParser::Status status = HTTPParser::STATUS_NONE;
  for (;;) {
    int const size = receive(aConnection, buffer);
    if (mParser.read(&mDocument, buffer, size, status) == 0) {
      break;
    }
    if (size == 0) {
      // The parser asks for more of the headers, and nothing more will ever come.
      return Ended;
    }
  }
  bool const refused =
      status == HTTPParser::STATUS_REFUSED || status == HTTPParser::STATUS_READ_ERROR;
  return refused ? Refused : Complete;
}

bool AssetRequestReader::isMethodAllowed() const {
  return isGet() || getMethod() == "POST";
}

std::string AssetRequestReader::text() const {
  if (isGet()) {
    return requestOfGet;
  }
  // Without a header "Host", and with a length of 0, there is no body at all.
  char const* const body = mDocument.GetBody();
  return body != nullptr ? body : "";
}

}  // namespace Zelv
