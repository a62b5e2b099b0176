#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

#include "zelv/adapter/testing/Peer.h"
#include "zelv/core/AssetConnectionListener.h"
#include "zelv/core/testing/FakeAssetProvider.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeSockets.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/OwnNetwork.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv::Testing {

/// The asset port with a provider of the test's own, in a network of its own.
class AssetPortTest : public ::testing::Test {
 protected:
  using FakeSockets = Platform::Fake::FakeSockets;
  using FakeFiles = Platform::Fake::FakeFiles;

  static constexpr std::uint16_t cPort = 4450;
  static constexpr char const* cMimeTypes =
      "<mimetypes><mime extension=\"png\">image/png</mime><mime extension=\"jpg\">image/jpeg</mime>"
      "<mime extension=\"none\"/></mimetypes>";
  static constexpr char const* cThreadOfConnection =
      "Quorl-AssetConnectionListener::startConnectionListener";

  static constexpr char const* cEnvelope =
      "<Envelope><Header/><Body><AssetRequest ID='1'><Asset name='A'/></AssetRequest></Body>"
      "</Envelope>";
  /// As the provider gets it.
  static constexpr char const* cRequest = "<AssetRequest ID='1'><Asset name='A'/></AssetRequest>";

  AssetPortTest() { directories.putReadOnly("Mime.xml", cMimeTypes); }

  static std::string post(std::string const& aBody, std::string const& aHeaders = "") {
    return "POST / HTTP/1.1\r\nHost: tv\r\nContent-Type: text/xml\r\n" + aHeaders +
           "Content-Length: " + std::to_string(aBody.size()) + "\r\n\r\n" + aBody;
  }

  std::unique_ptr<AssetConnectionListener> listen() {
    auto listener = std::make_unique<AssetConnectionListener>();
    EXPECT_TRUE(listener->initialize(&provider)) << log.dump();
    EXPECT_NE(listener->Create("listener", 0x1000), 0);
    return listener;
  }

  static Peer connect() { return Peer::connectedTo(cPort); }

  /// As a client does it: all that came back, up to the end of the connection.
  static std::string exchange(std::string const& aRequest) {
    Peer peer = connect();
    EXPECT_TRUE(peer.send(aRequest));
    return peer.receiveAll();
  }

  /// As exchange(), with a listener for it alone.
  std::string served(std::string const& aRequest) {
    auto const listener = listen();
    return exchange(aRequest);
  }

  /// What a response says separates its parts.
  static std::string boundaryOf(std::string const& aResponse) {
    std::string const mark = "boundry=";
    std::size_t const begin = aResponse.find(mark);
    return begin == std::string::npos ? "no boundary" : aResponse.substr(begin + mark.size(), 36);
  }

  /// The whole answer with these parts, and with the boundary that the response names.
  static std::string answer(std::string const& aResponse, std::string const& aParts = "") {
    std::string const boundary = boundaryOf(aResponse);
    return "HTTP/1.1 202 Accepted\r\nContent-Type: multipart/related; boundry=" + boundary +
           "\r\nConnection: close\r\n\r\n" + aParts + "--" + boundary + "--\r\n";
  }

  static std::string textPart(std::string const& aResponse, std::string const& aText) {
    return "--" + boundaryOf(aResponse) +
           "\r\nContent-Type: application/soap+xml; charset=utf-8\r\nContent-ID: AssetContents\r\n"
           "\r\n" +
           aText + "\r\n";
  }

  static std::string filePart(std::string const& aResponse, std::string const& aType,
                              std::string const& aId, std::string const& aBytes,
                              std::string const& aEnd = "\r\n") {
    return filePartHead(aResponse, aType, aId, aBytes.size()) + aBytes + aEnd;
  }

  static std::string filePartHead(std::string const& aResponse, std::string const& aType,
                                  std::string const& aId, std::size_t aSize) {
    return "--" + boundaryOf(aResponse) + "\r\nContent-Type: " + aType +
           "\r\nContent-Transfer-Encoding: Little-Endian\r\nContent-ID: " + aId +
           "\r\nContent-Length: " + std::to_string(aSize) + "\r\n\r\n";
  }

  /// Makes a file in the writable directory. @return its path.
  std::string file(std::string const& aName, std::string const& aBytes) const {
    directories.putWritable(aName, aBytes);
    return directories.writable() + aName;
  }

  static AssetFileObject object(std::string const& aPath, std::string const& aId = "id") {
    return AssetFileObject(aPath.substr(aPath.rfind('/') + 1), aPath, aId);
  }

  /// Bytes that differ from piece to piece.
  static std::string bytes(std::size_t aSize) {
    std::string bytes(aSize, '\0');
    unsigned value = 1;
    for (char& byte : bytes) {
      value = value * 1664525U + 1013904223U;
      byte = static_cast<char>(value >> 24);
    }
    return bytes;
  }

  /// Waits, bounded, for what other threads bring about.
  static bool comesTo(std::function<bool()> const& aCondition) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!aCondition()) {
      if (std::chrono::steady_clock::now() > end) {
        return false;
      }
      std::this_thread::yield();
    }
    return true;
  }

  static int descriptors() {
    std::filesystem::directory_iterator const directory("/proc/self/fd");
    return static_cast<int>(std::distance(begin(directory), end(directory)));
  }

  /// First, since threads belong to the network that they were started in.
  Platform::Fake::OwnNetwork network;
  Platform::Fake::TemporaryDirectories directories;
  Platform::Fake::LogCapture log;
  FakeAssetProvider provider;
};

}  // namespace Zelv::Testing
