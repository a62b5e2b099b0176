#include "zelv/infrastructure/HTTPDocument.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "zelv/infrastructure/HTTPText.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Infrastructure {

HTTPDocument::HTTPDocument(HTTPRequest const& aRequest) : mRequest(aRequest) {}

HTTPDocument::HTTPDocument(HTTPDocument const& aOther)
    : mAttachment(aOther.mAttachment),
      mSuppressStoring(aOther.mSuppressStoring),
      mRequest(aOther.mRequest),
      mBodySize(aOther.mBodySize),
      mBoundary(aOther.mBoundary) {
  for (auto const& entry : aOther.mHeaders) {
    insert(std::make_unique<HTTPHeader>(*entry.second));
  }
  if (aOther.mBody != nullptr) {
    std::size_t const size = static_cast<std::size_t>(mBodySize) + 1;
    mBody = std::make_unique<char[]>(size);
    std::copy_n(aOther.mBody.get(), size, mBody.get());
  }
  for (auto const& attachment : aOther.mAttachments) {
    mAttachments.push_back(std::make_unique<HTTPDocument>(*attachment));
  }
}

void HTTPDocument::insert(std::unique_ptr<HTTPHeader> aHeader) {
  std::string_view const name = aHeader->GetName();
  mHeaders.try_emplace(name, std::move(aHeader));
}

int HTTPDocument::GetHeader(std::string const& aName, std::string& aValue) const {
  auto const found = mHeaders.find(aName);
  if (found == mHeaders.end()) {
    PCRealDebug::Print(PCRealDebug::Trace, "HTTPDocument::GetHeader: Exit. (header not found)");
    return -1;
  }
  aValue = found->second->GetValue();
  PCRealDebug::Print(PCRealDebug::Trace, "HTTPDocument::GetHeader: Exit. (header found)");
  return 0;
}

int HTTPDocument::SetHeader(std::string const& aName, std::string const& aValue) {
  if (aName.empty()) {
    return -1;
  }
  auto header = std::make_unique<HTTPHeader>(aName, aValue);
  mHeaders.erase(aName);
  insert(std::move(header));
  return 0;
}

bool HTTPDocument::m_AddHeader(std::string_view aLine) {
  auto header = std::make_unique<HTTPHeader>();
  header->m_ParseHeaderLine(aLine);
  if (header->GetName().empty()) {
    PCRealDebug::Print(PCRealDebug::Trace,
                       "HTTPDocument::m_AddHeader: Exit. (failed to create header!)");
    return false;
  }
  insert(std::move(header));
  return true;
}

bool HTTPDocument::m_SetRequest(std::string_view aLine) {
  HTTPRequest request;
  request.m_ParseRequestHeader(aLine);
  if (request.GetMethod().empty()) {
    PCRealDebug::Print(PCRealDebug::Trace,
                       "HTTPDocument::m_SetRequest: Exit. (failed to create request header!)");
    return false;
  }
  mRequest = request;
  return true;
}

int HTTPDocument::Serialize() {
  PCRealDebug::Print(PCRealDebug::Error,
                     "HTTPDocument::Serialize: Entry. WARNING! NOT IMPLEMENTED");
  if (!mAttachments.empty()) {
    setMultipartType();
  }
  PCRealDebug::Print(PCRealDebug::Error, "HTTPDocument::Serialize: Exit. WARNING! NOT IMPLEMENTED");
  return 0;
}

void HTTPDocument::setMultipartType() {
  std::string type;
  GetHeader("Content-Type", type);
  bool const isMultipart = type.substr(0, type.find('/')) == "multipart";
  if (!isMultipart || type.find("boundary=") == std::string::npos) {
    SetHeader("Content-Type", "multipart/mixed; boundary=\"4980320D9B8547dbA4EC840ADA5D5C56\"");
  }
}

void HTTPDocument::SetBody(std::unique_ptr<char[]> aBody, int aSize) {
  mBody = std::move(aBody);
  mBodySize = aSize;
}

void HTTPDocument::AddAttachment(std::unique_ptr<HTTPDocument> aAttachment) {
  mAttachments.push_back(std::move(aAttachment));
}

}  // namespace Zelv::Infrastructure
