#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/zelvctl/AssetAnswer.h"
#include "apps/zelvctl/AssetFolder.h"
#include "apps/zelvctl/AssetMessage.h"
#include "apps/zelvctl/AssetPrinter.h"
#include "apps/zelvctl/Failures.h"
#include "apps/zelvctl/HttpPost.h"
#include "apps/zelvctl/MultipartReader.h"
#include "apps/zelvctl/ProgressBar.h"

namespace ZelvCtl {

/// Takes the answer of a set to a request for assets: holds each part against what was asked for,
/// writes and prints the files. Without a folder it prints what the set says of the assets, and
/// takes no more of the answer than is needed for that.
///
/// What does not come is noted among the failures; what makes the rest of the answer worthless is
/// thrown.
class AssetDownload final : public HttpPost::Receiver, private MultipartReader::Listener {
 public:
  /// Where things go. All outlive the object.
  struct Places {
    AssetFolder* folder;  ///< null for a list
    AssetPrinter& printer;
    ProgressBar* bar;  ///< null for none
    Failures& failures;
  };

  /// @param aDevice  who answers, as people call it.
  AssetDownload(std::string const& aDevice, AssetMessage const& aMessage, Places const& aPlaces);

  void onHead(long aStatus, std::string const& aContentType) override;
  bool onData(std::string_view aBytes) override;

  /// No more will come. Throws when that is too soon.
  void end();

  /// True once nothing more is wanted of the answer.
  bool isComplete() const;

 private:
  void onText(std::string const& aText) override;
  void onFile(MultipartReader::Part const& aPart) override;
  void onFileData(std::string_view aBytes) override;
  void onFileEnd() override;

  void take(AssetAnswer const& aAnswer);
  void openFile(MultipartReader::Part const& aPart);
  void noteMissing();
  bool isList() const { return mPlaces.folder == nullptr; }
  std::string device() const { return "'" + mDevice + "'"; }

  std::string const mDevice;
  AssetMessage const& mMessage;
  Places const mPlaces;
  std::optional<MultipartReader> mReader;
  std::size_t mAnswered = 0;
  bool mHasGivenUp = false;     ///< the set answers for nothing more
  std::deque<Asset> mExpected;  ///< whose files have not come, of the last answer
  Asset mAsset;                 ///< whose file comes
  std::string mType;
  std::unique_ptr<WholeFile> mFile;
};

}  // namespace ZelvCtl
