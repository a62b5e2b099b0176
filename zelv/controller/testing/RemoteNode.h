#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>

#include "zelv/controller/DataController.h"
#include "zelv/controller/ForOthers.h"
#include "zelv/controller/RemoteDataController.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/controller/testing/TreeOfTexts.h"

namespace Zelv::Controller::Testing {

/// A data controller with its way to other devices and a tree of texts, as in a set. Two of them
/// differ by aNumber.
///
/// It needs the network adapter while it lives. Callbacks MUST outlive it.
template <int aNumber = 1>
class RemoteNode {
 public:
  static constexpr char const* cAddressPath =
      "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()";
  static constexpr char const* cIdentityPath = "/Zelv/Devices/LocalTV/@ID";
  static constexpr char const* cMobilePath = "/Zelv/Devices/Mobile/@ID";

  /// @param aAddress  of this device; without one the service does not start.
  explicit RemoteNode(std::string const& aDeviceId, std::string const& aAddress = "127.0.0.1")
      : texts(&controller), controller(aDeviceId, makeRemote()) {
    sTree = &controller;
    texts.put(cIdentityPath, aDeviceId);
    texts.put(cMobilePath, "");
    if (!aAddress.empty()) {
      texts.put(cAddressPath, aAddress);
    }
    controller.registerDataProvider("/Zelv/", &texts);
  }
  RemoteNode(RemoteNode const&) = delete;
  RemoteNode& operator=(RemoteNode const&) = delete;
  ~RemoteNode() {
    stop();
    sTree = nullptr;
  }

  /// Until this there is no data worker.
  void start() {
    controller.initialize();
    drain();
  }

  void stop() {
    if (!mStopped) {
      mStopped = true;
      controller.terminate();
    }
  }

  /// Waits until the data worker has done all that is queued.
  void drain() {
    RecordingCallback last;
    controller.requestData(cIdentityPath, nullptr, &last);
    ASSERT_TRUE(last.waitFor(1));
    if (controller.getQueueSize() > 0) {
      // It has overtaken what others ask for.
      ForOthers const scope;
      controller.requestData(cIdentityPath, nullptr, &last);
      ASSERT_TRUE(last.waitFor(2));
    }
  }

  /// Makes a peer's service known, as discovery does it.
  void know(std::string const& aDeviceId, std::string const& aUrl) {
    texts.put(lookupPath(aDeviceId), aUrl);
  }

  static std::string lookupPath(std::string const& aDeviceId) {
    return "/Zelv/Devices/RemoteTV[@ID='" + aDeviceId +
           "']/Services/Service[Name='DataControl']/URL/text()";
  }

  /// The list of phones has changed.
  void mobiles(std::string const& aList) {
    texts.put(cMobilePath, aList);
    controller.notifyDataSubscribers(cMobilePath, aList, GUID::nullGUID);
  }

  void change(std::string const& aXPath, std::string const& aText) {
    texts.put(aXPath, aText);
    controller.notifyDataSubscribers(aXPath, aText, GUID::createGUID());
  }

  /// From now on the remote side finds no tree.
  static void loseTree() { sTree = nullptr; }
  void giveTreeBack() { sTree = &controller; }

  static ICoreData* find() { return sTree; }

 private:
  std::unique_ptr<RemoteDataController> makeRemote() {
    auto handler = std::make_unique<RemoteDataController>(&controller, find);
    remote = handler.get();
    return handler;
  }

  static inline std::atomic<ICoreData*> sTree{nullptr};

  bool mStopped = false;

 public:
  /// Owned by the controller.
  RemoteDataController* remote = nullptr;
  TreeOfTexts texts;
  DataController controller;
};

}  // namespace Zelv::Controller::Testing
