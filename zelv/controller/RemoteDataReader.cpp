#include "zelv/controller/RemoteDataReader.h"

#include <exception>
#include <utility>

#include "zelv/adapter/OneHost.h"
#include "zelv/controller/DataController.h"
#include "zelv/infrastructure/XMLSerializer.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Controller {

using Infrastructure::URL;

namespace {

// The tags of a value as senders write them; they are cut off by position.
constexpr std::size_t cOpeningTag = 6;
constexpr std::size_t cClosingTag = 7;

std::optional<GUID> readId(std::string const& aText) {
  try {
    return GUID(aText);
  } catch (std::exception const&) {
    return std::nullopt;
  }
}

std::optional<URL> readUrl(std::string const& aText) {
  try {
    URL const url(aText);
    bool const usable = aText.size() <= RemoteDataReader::cUrlLength && Adapter::isOneHost(url);
    return usable ? std::optional<URL>(url) : std::nullopt;
  } catch (std::exception const&) {
    return std::nullopt;
  }
}

/// A bracket that is never closed. Such a path matches nothing.
bool hasOpenBracket(std::string const& aXPath) {
  std::string::size_type const open = aXPath.rfind('[');
  return open != std::string::npos && aXPath.find(']', open) == std::string::npos;
}

/// Nothing for a path that the tree would not take, or would take for that of a third device.
std::optional<std::string> localPath(std::string const& aXPath) {
  if (aXPath.size() > RemoteDataReader::cPathLength || hasOpenBracket(aXPath)) {
    return std::nullopt;
  }
  try {
    std::string path = DataController::convertToLocalXPath(aXPath);
    return path.starts_with("/Zelv/") ? std::optional<std::string>(std::move(path)) : std::nullopt;
  } catch (std::exception const&) {
    return std::nullopt;
  }
}

}  // namespace

RemoteDataReader::RemoteDataReader(std::string const& aMessage)
    : mMessage(Infrastructure::HierarchicalDB::OfOneThread{}) {
  mMessage.loadFromString(aMessage);
}

std::string RemoteDataReader::read(std::string const& aXPath) {
  std::string value;
  mMessage.getContent(aXPath, value);
  return value;
}

std::string RemoteDataReader::type() {
  return read("/Envelope/Body/*[1]/name()");
}

std::string RemoteDataReader::senderId() {
  return read("/Envelope/Header/SenderID/text()");
}

std::optional<std::string> RemoteDataReader::boundedSenderId() {
  std::string id = senderId();
  if (id.size() > cDeviceIdLength) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataController::onMessage: SenderID '%s' is too long.", id.c_str());
    return std::nullopt;
  }
  return id;
}

std::optional<URL> RemoteDataReader::notifyTo() {
  std::string const text = read("/Envelope/Header/NotifyTo/text()");
  std::optional<URL> url = readUrl(text);
  if (!url) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataController::onMessage: NotifyTo '%s' is not a URL.",
                       text.c_str());
  }
  return url;
}

std::optional<GUID> RemoteDataReader::transactionId() {
  std::string const text = read("/Envelope/Body/RequestData/TransactionId/text()");
  std::optional<GUID> id = readId(text);
  if (!id) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataController::onMessage: TransactionId '%s' is not a GUID.",
                       text.c_str());
  }
  return id;
}

std::optional<GUID> RemoteDataReader::subscriptionId(std::string const& aType) {
  std::string const text = read("/Envelope/Body/" + aType + "/SubscriptionId/text()");
  std::optional<GUID> id = readId(text);
  if (!id) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataController::onMessage: SubscriptionId '%s' is not a GUID.",
                       text.c_str());
  }
  return id;
}

std::optional<std::string> RemoteDataReader::path(std::string const& aType) {
  // The document has unescaped it once already. Senders have come to rely on the second time.
  std::string text = read("/Envelope/Body/" + aType + "/XPath/text()");
  Infrastructure::XMLSerializer::unescapeXMLEntities(text, text);
  std::optional<std::string> local = localPath(text);
  if (!local) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataController::onMessage: XPath '%s' is not a path of this device.",
                       text.c_str());
  }
  return local;
}

std::string RemoteDataReader::value() {
  return read("/Envelope/Body/OnData/Data/node()");
}

std::optional<std::string> RemoteDataReader::newValue() {
  std::string const element = read("/Envelope/Body/SetData/Data");
  if (element.size() < cOpeningTag) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataController::onMessage: Data '%s' is no element.",
                       element.c_str());
    return std::nullopt;
  }
  // An element that is closed at once has nothing between its tags.
  return element.size() <= cOpeningTag + cClosingTag
             ? std::string()
             : element.substr(cOpeningTag, element.size() - cOpeningTag - cClosingTag);
}

}  // namespace Zelv::Controller
