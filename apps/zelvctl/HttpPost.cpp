#include "apps/zelvctl/HttpPost.h"

#include <curl/curl.h>

#include <array>
#include <utility>

namespace ZelvCtl {

namespace {

/// Once for the process; there is nothing to give back at its end.
void prepareLibrary() {
  static CURLcode const result = curl_global_init(CURL_GLOBAL_NOTHING);
  if (result != CURLE_OK) {
    throw HttpPost::Error(curl_easy_strerror(result));
  }
}

constexpr int longestWait = 60000;
constexpr long mebibyte = 1024L * 1024L;

}  // namespace

struct HttpPost::Handles {
  Handles() {
    if (!easy || !multi) {
      throw Error("no memory");
    }
  }
  ~Handles() {
    curl_multi_remove_handle(multi.get(), easy.get());
    curl_slist_free_all(headers);
  }

  template <typename Value>
  void set(CURLoption aOption, Value aValue) const {
    curl_easy_setopt(easy.get(), aOption, aValue);
  }

  std::unique_ptr<CURLM, CURLMcode (*)(CURLM*)> multi{curl_multi_init(), curl_multi_cleanup};
  std::unique_ptr<CURL, void (*)(CURL*)> easy{curl_easy_init(), curl_easy_cleanup};
  curl_slist* headers = nullptr;
  std::array<char, CURL_ERROR_SIZE> error{};
};

HttpPost::HttpPost(std::string const& aUrl, std::string aText, Receiver& aReceiver, Bell& aBell)
    : mText(std::move(aText)),
      mReceiver(aReceiver),
      mBell(aBell),
      mHandles((prepareLibrary(), std::make_unique<Handles>())) {
  configure(aUrl);
  mThread = std::thread([this] { run(); });
}

HttpPost::~HttpPost() {
  mIsCancelled = true;
  curl_multi_wakeup(mHandles->multi.get());
  mThread.join();
}

// Plain HTTP to this very address: sets are at hand, no proxy reaches them, and none of them has
// another to send to. Sets know headers by their exact case, which is the library's own, and do not
// understand a client that waits for leave to send.
void HttpPost::configure(std::string const& aUrl) {
  Handles& handles = *mHandles;
  handles.headers = curl_slist_append(handles.headers, "Content-Type: text/xml; charset=utf-8");
  handles.headers = curl_slist_append(handles.headers, "Expect:");
  handles.set(CURLOPT_URL, aUrl.c_str());
  handles.set(CURLOPT_PROTOCOLS_STR, "http");
  handles.set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  handles.set(CURLOPT_PROXY, "");
  handles.set(CURLOPT_NOSIGNAL, 1L);
  handles.set(CURLOPT_CONNECTTIMEOUT, 3600L);
  handles.set(CURLOPT_BUFFERSIZE, mebibyte / 4);
  handles.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(mText.size()));
  handles.set(CURLOPT_POSTFIELDS, mText.c_str());
  handles.set(CURLOPT_HTTPHEADER, handles.headers);
  handles.set(CURLOPT_ERRORBUFFER, handles.error.data());
  handles.set(CURLOPT_WRITEFUNCTION, &HttpPost::onBytes);
  handles.set(CURLOPT_WRITEDATA, this);
  handles.set(CURLOPT_HEADERFUNCTION, &HttpPost::onHeader);
  handles.set(CURLOPT_HEADERDATA, this);
}

void HttpPost::run() {
  try {
    perform();
  } catch (...) {
    mFault = std::current_exception();
  }
  mIsOver = true;
  mBell.ring();
}

void HttpPost::perform() {
  CURLM* const multi = mHandles->multi.get();
  curl_multi_add_handle(multi, mHandles->easy.get());
  int running = 1;
  while (curl_multi_perform(multi, &running) == CURLM_OK && running > 0 && !mIsCancelled) {
    curl_multi_poll(multi, nullptr, 0, longestWait, nullptr);
  }
  int left = 0;
  CURLMsg const* const message = curl_multi_info_read(multi, &left);
  if (mFault || mHasEnough) {
    return;
  }
  if (message == nullptr || message->data.result != CURLE_OK) {
    CURLcode const code = message == nullptr ? CURLE_ABORTED_BY_CALLBACK : message->data.result;
    throw Error(mHandles->error.front() == 0 ? curl_easy_strerror(code) : mHandles->error.data());
  }
  tellHead();
}

void HttpPost::tellHead() {
  if (mHasHead) {
    return;
  }
  mHasHead = true;
  long status = 0;
  char const* type = nullptr;
  curl_easy_getinfo(mHandles->easy.get(), CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(mHandles->easy.get(), CURLINFO_CONTENT_TYPE, &type);
  mReceiver.onHead(status, type == nullptr ? "" : type);
}

bool HttpPost::receive(std::string_view aBytes) {
  try {
    tellHead();
    mHasEnough = !mReceiver.onData(aBytes);
    return !mHasEnough && !mIsCancelled;
  } catch (...) {
    // Nothing may be thrown through the library.
    mFault = std::current_exception();
    return false;
  }
}

std::size_t HttpPost::onBytes(char* aBytes, std::size_t /*aOne*/, std::size_t aSize, void* aSelf) {
  auto& self = *static_cast<HttpPost*>(aSelf);
  self.mIsReceiverBusy = true;
  bool const goesOn = self.receive({aBytes, aSize});
  ++self.mSteps;
  self.mIsReceiverBusy = false;
  return goesOn ? aSize : 0;
}

// The library keeps all of them.
std::size_t HttpPost::onHeader(char* /*aBytes*/, std::size_t aOne, std::size_t aSize, void* aSelf) {
  auto& self = *static_cast<HttpPost*>(aSelf);
  ++self.mSteps;
  self.mHeaderSize += aOne * aSize;
  return self.mHeaderSize <= MaxHeaders ? aOne * aSize : 0;
}

void HttpPost::finish() const {
  if (mFault) {
    std::rethrow_exception(mFault);
  }
}

}  // namespace ZelvCtl
