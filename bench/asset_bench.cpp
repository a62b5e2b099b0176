// A file fetched over fresh connections from the asset port, beside a server in plain system calls
// that reads 8,192 bytes and sends them, and beside nginx.

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <pthread.h>
#include <signal.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "bench/Loopback.h"
#include "zelv/core/AssetConnectionListener.h"
#include "zelv/core/AssetRequestHandler.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCRealDebug.h"

namespace {

using Zelv::Bench::boundSocket;
using Zelv::Bench::freePort;
using Zelv::Bench::loopback;

constexpr int cPiece = 8192;

int connectedTo(int aPort) {
  sockaddr_in const address = loopback(aPort);
  int const peer = socket(AF_INET, SOCK_STREAM, 0);
  if (connect(peer, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0) {
    close(peer);
    return -1;
  }
  return peer;
}

/// What came back, in bytes.
std::size_t fetch(int aPort, std::string const& aRequest) {
  int const peer = connectedTo(aPort);
  if (peer < 0) {
    return 0;
  }
  static char buffer[65536];
  std::size_t total = 0;
  send(peer, aRequest.data(), aRequest.size(), MSG_NOSIGNAL);
  for (ssize_t size = recv(peer, buffer, sizeof buffer, 0); size > 0;
       size = recv(peer, buffer, sizeof buffer, 0)) {
    total += static_cast<std::size_t>(size);
  }
  close(peer);
  return total;
}

/// One directory for the whole run, with the files "16.png" and "1024.png".
class Files {
 public:
  static Files& get() {
    static Files files;
    return files;
  }
  std::string const& directory() const { return mDirectory; }
  std::string path(long aKilobytes) const {
    return mDirectory + std::to_string(aKilobytes) + ".png";
  }

 private:
  Files() {
    char name[] = "/tmp/zelv-bench-XXXXXX";
    mDirectory = std::string(mkdtemp(name)) + "/";
    for (long const kilobytes : {16L, 1024L}) {
      std::ofstream(path(kilobytes)) << std::string(static_cast<std::size_t>(kilobytes) << 10, 'x');
    }
    // nginx may run its worker as somebody else.
    chmod(mDirectory.c_str(), 0755);
  }
  ~Files() { std::filesystem::remove_all(mDirectory); }

  std::string mDirectory;
};

void measure(benchmark::State& aState, int aPort, std::string const& aRequest) {
  std::size_t const least = static_cast<std::size_t>(aState.range(0)) << 10;
  for (auto _ : aState) {
    if (fetch(aPort, aRequest) < least) {
      aState.SkipWithError("a fetch failed");
      return;
    }
  }
}

// The asset port

class OneFile : public Zelv::IAssetProvider {
 public:
  explicit OneFile(std::string aPath) : mPath(std::move(aPath)) {}
  virtual ~OneFile() = default;
  int handleAssetRequest(std::string const&, Zelv::AssetRequestHandler* aHandler,
                         Zelv::GUID) override {
    aHandler->sendText("<RequestContents/>", false);
    aHandler->sendFiles({Zelv::AssetFileObject("file", mPath, "1")}, true);
    return 0;
  }

 private:
  std::string const mPath;
};

void asset(benchmark::State& aState) {
  PCRealDebug::Silence();
  Zelv::Platform::Directories::Set(ZELV_BENCH_FACTORY_FILES, Files::get().directory());
  OneFile provider(Files::get().path(aState.range(0)));
  Zelv::AssetConnectionListener listener;
  if (!listener.initialize(&provider) || !listener.Create("listener", 0x1000)) {
    aState.SkipWithError("port 4450 is taken");
    return;
  }
  measure(aState, Zelv::AssetConnectionListener::Port,
          "GET /file HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
}

// The floor

/// A new thread for each connection, gone at its end.
class BareServer {
 public:
  enum Way { Copy, Sendfile };

  BareServer(std::string aPath, Way aWay)
      : mPath(std::move(aPath)), mWay(aWay), mSocket(boundSocket(SOCK_STREAM, mPort)) {
    listen(mSocket, 5);
    pthread_create(&mThread, nullptr, &BareServer::main, this);
  }
  ~BareServer() {
    shutdown(mSocket, SHUT_RDWR);
    pthread_join(mThread, nullptr);
    close(mSocket);
  }
  int port() const { return mPort; }

 private:
  struct Job {
    char const* path;
    Way way;
    int peer;
  };

  static void* main(void* aSelf) {
    auto const& self = *static_cast<BareServer*>(aSelf);
    pthread_attr_t detached;
    pthread_attr_init(&detached);
    pthread_attr_setdetachstate(&detached, PTHREAD_CREATE_DETACHED);
    for (int peer = accept(self.mSocket, nullptr, nullptr); peer >= 0;
         peer = accept(self.mSocket, nullptr, nullptr)) {
      pthread_t thread;
      pthread_create(&thread, &detached, &BareServer::serve,
                     new Job{self.mPath.c_str(), self.mWay, peer});
    }
    pthread_attr_destroy(&detached);
    return nullptr;
  }

  static void* serve(void* aJob) {
    std::unique_ptr<Job> const job(static_cast<Job*>(aJob));
    char buffer[cPiece];
    std::string_view request;
    ssize_t size = 0;
    do {
      ssize_t const more =
          recv(job->peer, buffer + size, sizeof buffer - static_cast<size_t>(size), 0);
      size += more > 0 ? more : 0;
      request = std::string_view(buffer, static_cast<std::size_t>(size));
      if (more <= 0) {
        break;
      }
    } while (request.find("\r\n\r\n") == std::string_view::npos);
    int const file = open(job->path, O_RDONLY);
    char head[256];
    int const length = snprintf(
        head, sizeof head, "HTTP/1.1 200 OK\r\nContent-Length: %ld\r\nConnection: close\r\n\r\n",
        static_cast<long>(lseek(file, 0, SEEK_END)));
    lseek(file, 0, SEEK_SET);
    send(job->peer, head, static_cast<std::size_t>(length), MSG_NOSIGNAL);
    while (job->way == Sendfile && sendfile(job->peer, file, nullptr, 1U << 30) > 0) {
    }
    while ((size = read(file, buffer, sizeof buffer)) > 0) {
      send(job->peer, buffer, static_cast<std::size_t>(size), MSG_NOSIGNAL);
    }
    close(file);
    close(job->peer);
    return nullptr;
  }

  std::string const mPath;
  Way const mWay;
  int mPort = 0;
  int mSocket;
  pthread_t mThread{};
};

void bare(benchmark::State& aState, BareServer::Way aWay) {
  BareServer const server(Files::get().path(aState.range(0)), aWay);
  measure(aState, server.port(),
          "GET /file HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
}

void bareAsset(benchmark::State& aState) {
  bare(aState, BareServer::Copy);
}

/// What the kernel could save by moving the file without a copy in this process.
void bareSendfile(benchmark::State& aState) {
  bare(aState, BareServer::Sendfile);
}

BENCHMARK(asset)->ArgName("KB")->Arg(16)->Arg(1024)->UseRealTime();
BENCHMARK(bareAsset)->ArgName("KB")->Arg(16)->Arg(1024)->UseRealTime();
BENCHMARK(bareSendfile)->ArgName("KB")->Arg(16)->Arg(1024)->UseRealTime();

// The peer

#ifdef BENCH_NGINX

/// One process with one worker and no log.
class Nginx {
 public:
  Nginx() {
    mPort = freePort(SOCK_STREAM);
    std::string const& directory = Files::get().directory();
    std::ofstream(directory + "nginx.conf")
        << "daemon off; master_process off; worker_processes 1; pid " << directory
        << "nginx.pid; error_log /dev/null crit;\n"
           "events { worker_connections 256; }\n"
           "http { access_log off; sendfile on; client_body_temp_path "
        << directory << "b; proxy_temp_path " << directory << "p; fastcgi_temp_path " << directory
        << "f; uwsgi_temp_path " << directory << "u; scgi_temp_path " << directory
        << "s;\n  server { listen 127.0.0.1:" << mPort << "; root " << directory << "; } }\n";
    mProcess = fork();
    if (mProcess == 0) {
      execl(BENCH_NGINX, "nginx", "-c", (directory + "nginx.conf").c_str(), "-p", directory.c_str(),
            nullptr);
      _exit(127);
    }
  }
  ~Nginx() {
    kill(mProcess, SIGTERM);
    waitpid(mProcess, nullptr, 0);
  }
  /// Waits, bounded, until it answers.
  bool isReady() const {
    for (int turn = 0; turn < 500; ++turn) {
      int const peer = connectedTo(mPort);
      if (peer >= 0) {
        close(peer);
        return true;
      }
      usleep(10000);
    }
    return false;
  }
  int port() const { return mPort; }

 private:
  int mPort = 0;
  pid_t mProcess = -1;
};

void nginx(benchmark::State& aState) {
  Nginx const server;
  if (!server.isReady()) {
    aState.SkipWithError("nginx does not answer");
    return;
  }
  measure(aState, server.port(),
          "GET /" + std::to_string(aState.range(0)) +
              ".png HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
}

BENCHMARK(nginx)->ArgName("KB")->Arg(16)->Arg(1024)->UseRealTime();

#endif

}  // namespace
