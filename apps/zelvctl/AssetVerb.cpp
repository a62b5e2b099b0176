#include "apps/zelvctl/AssetVerb.h"

#include <optional>
#include <stdexcept>

#include "apps/zelvctl/AssetDownload.h"
#include "apps/zelvctl/AssetFolder.h"
#include "apps/zelvctl/AssetMessage.h"
#include "apps/zelvctl/ProgressBar.h"

namespace ZelvCtl {

AssetVerb::AssetVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut,
                     std::ostream& aErrors, bool aIsTerminal)
    : mErrand(aOptions, aStopDescriptor),
      mPrinter(aOut, aOptions.json),
      mErrors(aErrors),
      mIsTerminal(aIsTerminal) {}

void AssetVerb::run() {
  Failures failures;
  try {
    fetch(failures);
  } catch (std::exception const& error) {
    failures.add(error.what());
  }
  if (mPrinter.isBroken()) {
    failures.add("cannot write to standard output");
  }
  failures.raise(mErrors);
}

void AssetVerb::fetch(Failures& aFailures) {
  Options const& options = mErrand.options();
  std::optional<AssetFolder> folder;
  if (!options.list) {
    folder.emplace(options.folder);
  }
  std::optional<ProgressBar> bar;
  if (mIsTerminal && folder) {
    bar.emplace(mErrors, ProgressBar::widthOfTerminal);
  }
  Target const target = mErrand.find(Service::assets());
  AssetMessage const message(mErrand.identity().id, options);
  AssetDownload download(target.name, message,
                         {folder ? &*folder : nullptr, mPrinter, bar ? &*bar : nullptr, aFailures});
  HttpPost const post(target.url.toString(), message.text(), download, mErrand.loop().bell());
  await(post, target);
  try {
    post.finish();
  } catch (HttpPost::Error const& error) {
    if (!download.isComplete()) {
      throw std::runtime_error("cannot fetch from '" + target.name + "' at " +
                               target.url.toString() + ": " + error.what());
    }
  }
  download.end();
}

/// As long as something comes, however long it takes in all.
void AssetVerb::await(HttpPost const& aPost, Target const& aTarget) {
  std::uint64_t steps = 0;
  while (!mErrand.await([&] { return aPost.isOver(); })) {
    if (aPost.steps() == steps && !aPost.isReceiverBusy()) {
      throw std::runtime_error("'" + aTarget.name + "' sent nothing " +
                               (steps == 0 ? "" : "more ") + mErrand.timeAsText());
    }
    steps = aPost.steps();
    mErrand.renewTime();
  }
}

}  // namespace ZelvCtl
