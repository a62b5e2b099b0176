// The head of a request through the parser, beside http_parser with its headers collected in a map.

#include <benchmark/benchmark.h>

#include <map>
#include <string>

#include "zelv/infrastructure/HTTPDocument.h"
#include "zelv/infrastructure/HTTPParser.h"
#include "zelv/platform/PCRealDebug.h"

#ifdef BENCH_HTTP_PARSER
#include <http_parser.h>
#endif

namespace {

using Zelv::Infrastructure::HTTPDocument;
using Zelv::Infrastructure::HTTPParser;

/// 400 bytes, as a phone sends them.
std::string const cHead = [] {
  std::string head =
      "GET /assets/TVImage HTTP/1.1\r\n"
      "Host: 192.168.1.20\r\n"
      "User-Agent: Dalvik/2.1.0 (Linux; U; Android 13; Pixel 6 Build/TQ3A.230805.001)\r\n"
      "Accept: multipart/related, application/soap+xml, image/png, */*\r\n"
      "Accept-Encoding: identity\r\n"
      "Accept-Language: de-DE,de;q=0.9,en;q=0.8\r\n"
      "Cache-Control: no-cache\r\n"
      "Connection: close\r\n"
      "X-Request: ";
  head.append(400 - 4 - head.size(), 'x');
  return head + "\r\n\r\n";
}();

void parse(benchmark::State& aState) {
  PCRealDebug::Silence();
  for (auto _ : aState) {
    HTTPDocument document;
    HTTPParser parser;
    HTTPParser::Status status = HTTPParser::STATUS_NONE;
    if (parser.read(&document, cHead.data(), static_cast<int>(cHead.size()), status) != 0 ||
        document.GetRequest().GetMethod() != "GET") {
      aState.SkipWithError("the head was not understood");
    }
  }
}

BENCHMARK(parse);

#ifdef BENCH_HTTP_PARSER

/// What a handler needs of a request: method, URI and headers by name.
struct Collected {
  std::string uri;
  std::string name;
  std::string* value = nullptr;
  std::map<std::string, std::string> headers;
  bool complete = false;

  static Collected& of(http_parser* aParser) { return *static_cast<Collected*>(aParser->data); }

  static int onUrl(http_parser* aParser, char const* aText, std::size_t aSize) {
    of(aParser).uri.append(aText, aSize);
    return 0;
  }
  static int onField(http_parser* aParser, char const* aText, std::size_t aSize) {
    Collected& self = of(aParser);
    if (self.value != nullptr) {
      self.value = nullptr;
      self.name.clear();
    }
    self.name.append(aText, aSize);
    return 0;
  }
  static int onValue(http_parser* aParser, char const* aText, std::size_t aSize) {
    Collected& self = of(aParser);
    if (self.value == nullptr) {
      self.value = &self.headers[self.name];
    }
    self.value->append(aText, aSize);
    return 0;
  }
  static int onComplete(http_parser* aParser) {
    of(aParser).complete = true;
    return 0;
  }
};

void httpParser(benchmark::State& aState) {
  http_parser_settings settings;
  http_parser_settings_init(&settings);
  settings.on_url = &Collected::onUrl;
  settings.on_header_field = &Collected::onField;
  settings.on_header_value = &Collected::onValue;
  settings.on_message_complete = &Collected::onComplete;
  for (auto _ : aState) {
    Collected collected;
    http_parser parser;
    http_parser_init(&parser, HTTP_REQUEST);
    parser.data = &collected;
    http_parser_execute(&parser, &settings, cHead.data(), cHead.size());
    if (!collected.complete || parser.method != HTTP_GET || collected.headers.size() != 8) {
      aState.SkipWithError("the head was not understood");
    }
  }
}

BENCHMARK(httpParser);

#endif

}  // namespace
