#include "zelv/core/MimeTypes.h"

#include "zelv/infrastructure/XPathGate.h"
#include "zelv/infrastructure/ZelvFileUtil.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCTime.h"
#include "zelv/platform/TCAutoLock.h"

namespace Zelv {

using Infrastructure::HierarchicalDB;
using Infrastructure::XPathGate;
using Infrastructure::ZelvFileUtil;
using Platform::Directories;

bool MimeTypes::load() {
  TCAutoLock lock(mLock);
  if (mTypes) {
    return true;
  }
  std::int64_t const now = PCTime::MonotonicMs();
  if (mFailed && now - mFailedAt < cRetryAfter) {
    return false;
  }
  mFailed = ZelvFileUtil::checkIsFileAvailable("Mime.xml", Directories::Writable(), true) != 0;
  if (mFailed) {
    mFailedAt = now;
    return false;
  }
  mTypes = std::make_shared<HierarchicalDB>();
  mTypes->loadFromFile(Directories::Writable() + "Mime.xml");
  return true;
}

int MimeTypes::find(std::string const& aExtension, std::string& aType) {
  aType.clear();
  std::shared_ptr<HierarchicalDB> types;
  {
    TCAutoLock lock(mLock);
    types = mTypes;
  }
  if (!types || !XPathGate::isQuotableLiteral(aExtension)) {
    return -1;
  }
  return types->getContent("/mimetypes/mime[@extension=\"" + aExtension + "\"]/text()", aType);
}

}  // namespace Zelv
