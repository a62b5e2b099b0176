#include "apps/zelvctl/AssetDownload.h"

#include <algorithm>
#include <stdexcept>

namespace ZelvCtl {

AssetDownload::AssetDownload(std::string const& aDevice, AssetMessage const& aMessage,
                             Places const& aPlaces)
    : mDevice(aDevice), mMessage(aMessage), mPlaces(aPlaces) {}

void AssetDownload::onHead(long aStatus, std::string const& aContentType) {
  if (aStatus < 200 || aStatus > 299) {
    throw std::runtime_error(device() + " refuses the request, with status " +
                             std::to_string(aStatus));
  }
  auto const boundary = MultipartReader::boundaryOf(aContentType);
  if (!boundary) {
    throw std::runtime_error(device() + " answers with no assets, but with '" + aContentType + "'");
  }
  MultipartReader::Listener& parts = *this;
  mReader.emplace(*boundary, parts);
}

bool AssetDownload::onData(std::string_view aBytes) {
  try {
    mReader->read(aBytes);
  } catch (MultipartReader::Malformed const& error) {
    throw std::runtime_error("the answer of " + device() + " is broken: " + error.what());
  } catch (AssetAnswer::Malformed const& error) {
    throw std::runtime_error("the answer of " + device() + " is broken: " + error.what());
  }
  return !isComplete();
}

bool AssetDownload::isComplete() const {
  bool const hasList = isList() && (mAnswered == mMessage.things().size() || mHasGivenUp);
  return hasList || (mReader && mReader->isComplete());
}

void AssetDownload::onText(std::string const& aText) {
  if (mAnswered == mMessage.things().size() || mHasGivenUp) {
    throw MultipartReader::Malformed("it goes on behind the last answer");
  }
  noteMissing();
  AssetAnswer const answer(aText);
  if (answer.requestId() != mMessage.requestId()) {
    throw MultipartReader::Malformed("it is one to another request");
  }
  take(answer);
  ++mAnswered;
}

void AssetDownload::take(AssetAnswer const& aAnswer) {
  std::string const& thing = mMessage.things()[mAnswered];
  mHasGivenUp = aAnswer.isFailure();
  if (mHasGivenUp) {
    mPlaces.failures.add(device() + " cannot describe " + thing);
  } else if (aAnswer.assets().empty()) {
    mPlaces.failures.add(device() + " has no " + thing);
  } else if (isList()) {
    for (Asset const& asset : aAnswer.assets()) {
      mPlaces.printer.description(asset);
    }
  } else {
    mExpected.assign(aAnswer.assets().begin(), aAnswer.assets().end());
  }
}

/// A set stops at the first file that it cannot open.
void AssetDownload::noteMissing() {
  for (Asset const& asset : mExpected) {
    mPlaces.failures.add(device() + " did not send '" + asset.source + "', the file of asset '" +
                         asset.name + "'");
  }
  mExpected.clear();
}

void AssetDownload::onFile(MultipartReader::Part const& aPart) {
  if (isList()) {
    return;
  }
  auto const asset = std::find_if(mExpected.begin(), mExpected.end(),
                                  [&](Asset const& aAsset) { return aAsset.id == aPart.id; });
  if (asset == mExpected.end()) {
    throw MultipartReader::Malformed("there is a file in it that belongs to no asset");
  }
  mAsset = *asset;
  mExpected.erase(asset);
  openFile(aPart);
}

/// What cannot be kept is passed over.
void AssetDownload::openFile(MultipartReader::Part const& aPart) {
  try {
    mFile = mPlaces.folder->create(mAsset.source);
  } catch (AssetFolder::Refusal const& refusal) {
    mPlaces.failures.add("asset '" + mAsset.name + "' was not kept: " + refusal.what());
    return;
  }
  mType = aPart.type;
  if (mPlaces.bar != nullptr) {
    mPlaces.bar->begin(mFile->name(), aPart.size.value_or(0));
  }
}

void AssetDownload::onFileData(std::string_view aBytes) {
  if (!mFile) {
    return;
  }
  mFile->write(aBytes);
  if (mPlaces.bar != nullptr) {
    mPlaces.bar->advance(aBytes.size());
  }
}

void AssetDownload::onFileEnd() {
  if (!mFile) {
    return;
  }
  mFile->finish();
  if (mPlaces.bar != nullptr) {
    mPlaces.bar->clear();
  }
  mPlaces.printer.file(mAsset, mPlaces.folder->pathOf(mFile->name()), mFile->size(), mType);
  mFile.reset();
}

void AssetDownload::end() {
  if (!isComplete()) {
    std::string const place = mFile ? " in '" + mFile->name() + "'" : "";
    throw std::runtime_error("the answer of " + device() + " breaks off" + place);
  }
  noteMissing();
  for (; mAnswered < mMessage.things().size(); ++mAnswered) {
    mPlaces.failures.add(device() + " gave no answer for " + mMessage.things()[mAnswered]);
  }
}

}  // namespace ZelvCtl
