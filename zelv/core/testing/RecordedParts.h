#pragma once

#include <functional>
#include <list>
#include <string>
#include <vector>

#include "zelv/core/AssetParts.h"

namespace Zelv::Testing {

/// Writes down the parts of a response.
class RecordedParts : public AssetParts {
 public:
  RecordedParts() = default;
  RecordedParts(RecordedParts const&) = delete;
  RecordedParts& operator=(RecordedParts const&) = delete;
  virtual ~RecordedParts() = default;

  bool sendText(std::string const& aText, bool) override {
    texts.push_back(aText);
    calls.push_back("text " + aText);
    if (reaction) {
      reaction();
    }
    return result;
  }

  bool sendFiles(std::list<AssetFileObject> const& aFiles, bool aLast) override {
    std::string call = "files";
    for (AssetFileObject const& file : aFiles) {
      call += " " + file.getFileName() + "|" + file.getPath() + "|" + file.getID();
      call += file.mayBeOpened() ? "" : "|refused";
    }
    calls.push_back(call + (aLast ? " last" : ""));
    lasts.push_back(aLast);
    return result;
  }

  /// What was sent, in order.
  std::vector<std::string> calls;
  std::vector<std::string> texts;
  /// The flag of each list of files.
  std::vector<bool> lasts;
  /// What every operation gives.
  bool result = true;
  /// Called with each text, after it was noted.
  std::function<void()> reaction;
};

}  // namespace Zelv::Testing
