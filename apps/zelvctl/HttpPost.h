#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include "apps/zelvctl/Bell.h"

namespace ZelvCtl {

/// One POST of an XML text over HTTP and its answer, on a thread of its own.
class HttpPost {
 public:
  /// Takes the answer as it comes, on the thread of the exchange. What it throws ends the exchange,
  /// and is what finish() throws.
  class Receiver {
   public:
    virtual ~Receiver() = default;

    /// Once, before all else.
    virtual void onHead(long aStatus, std::string const& aContentType) = 0;

    /// @return false when no more of the answer is wanted.
    virtual bool onData(std::string_view aBytes) = 0;
  };

  /// The answer did not come, or not as a whole.
  class Error : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
  };

  static constexpr std::size_t MaxHeaders = 65536;  ///< bytes

  /// @param aReceiver, aBell  outlive the object; the bell is rung at the end.
  HttpPost(std::string const& aUrl, std::string aText, Receiver& aReceiver, Bell& aBell);
  HttpPost(HttpPost const&) = delete;
  HttpPost& operator=(HttpPost const&) = delete;

  /// Gives up, if it has not ended.
  ~HttpPost();

  bool isOver() const { return mIsOver; }

  /// Changes with all that comes.
  std::uint64_t steps() const { return mSteps; }

  /// True while the receiver has something to do: it is not the other side that is slow.
  bool isReceiverBusy() const { return mIsReceiverBusy; }

  /// Throws what the receiver has thrown, or Error. To be called once it is over.
  void finish() const;

 private:
  struct Handles;

  void configure(std::string const& aUrl);
  void run();
  void perform();
  bool receive(std::string_view aBytes);
  void tellHead();
  static std::size_t onBytes(char* aBytes, std::size_t aOne, std::size_t aSize, void* aSelf);
  static std::size_t onHeader(char* aBytes, std::size_t aOne, std::size_t aSize, void* aSelf);

  std::string const mText;
  Receiver& mReceiver;
  Bell& mBell;
  std::unique_ptr<Handles> const mHandles;
  std::size_t mHeaderSize = 0;
  bool mHasHead = false;
  bool mHasEnough = false;
  std::exception_ptr mFault;
  std::atomic<bool> mIsCancelled = false;
  std::atomic<bool> mIsOver = false;
  std::atomic<bool> mIsReceiverBusy = false;
  std::atomic<std::uint64_t> mSteps = 0;
  std::thread mThread;
};

}  // namespace ZelvCtl
