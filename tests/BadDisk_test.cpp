// Saving where nothing more can be saved: the old content is never lost.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/statvfs.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include "tests/TemporarySet.h"
#include "zelv/Zelv.h"
#include "zelv/core/testing/Listener.h"
#include "zelv/platform/PCThread.h"
#include "zelv/platform/fake/FakeLog.h"

namespace {

using ::testing::HasSubstr;
using Zelv::GUID;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Testing::Listener;

constexpr char const* cName = "/Zelv/Applications/ActiveApplication/Name/text()";
constexpr char const* cFile = "Applications.xml";

/// A place for the writable directory that can be made to refuse.
class Disk {
 public:
  virtual ~Disk() = default;
  /// Lets nothing be written, made or removed.
  virtual void protect() = 0;
  virtual void unprotect() = 0;
  /// Lets so many bytes more be written.
  virtual void fill(std::size_t aRoom) = 0;
  /// Makes room again.
  virtual void clear() = 0;
};

/// A small file system in memory, seen only by the thread that mounts it and by those that it
/// starts.
class SmallDisk : public Disk {
 public:
  /// @return null where the process may not mount.
  static std::unique_ptr<Disk> mountAt(std::string const& aDirectory) {
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("tmpfs", aDirectory.c_str(), "tmpfs", 0, "size=512k,mode=777") != 0) {
      return nullptr;
    }
    return std::unique_ptr<Disk>(new SmallDisk(aDirectory));
  }

  void protect() override { remount(MS_RDONLY); }
  void unprotect() override { remount(0); }

  void fill(std::size_t aRoom) override {
    struct statvfs state {};
    ASSERT_EQ(::statvfs(mDirectory.c_str(), &state), 0);
    std::size_t const free = state.f_bavail * state.f_bsize;
    ASSERT_GE(free, aRoom);
    std::ofstream filler(mDirectory + "filler", std::ios::binary);
    filler << std::string(free - aRoom, 'x');
    filler.close();
    ASSERT_TRUE(filler);
  }

  void clear() override { std::filesystem::remove(mDirectory + "filler"); }

 private:
  explicit SmallDisk(std::string const& aDirectory) : mDirectory(aDirectory) {}

  void remount(unsigned long aFlags) {
    ASSERT_EQ(::mount(nullptr, mDirectory.c_str(), nullptr, MS_REMOUNT | aFlags, nullptr), 0);
  }

  std::string mDirectory;
};

/// The host's own disk, with a limit on the size of files; for processes that may not mount.
class LimitedDisk : public Disk {
 public:
  LimitedDisk() {
    ::getrlimit(RLIMIT_FSIZE, &mBefore);
    mSignalBefore = std::signal(SIGXFSZ, SIG_IGN);
  }
  LimitedDisk(LimitedDisk const&) = delete;
  LimitedDisk& operator=(LimitedDisk const&) = delete;
  ~LimitedDisk() override {
    ::setrlimit(RLIMIT_FSIZE, &mBefore);
    std::signal(SIGXFSZ, mSignalBefore);
  }

  // A file that has no room at all cannot be written either.
  void protect() override { fill(0); }
  void unprotect() override { clear(); }

  void fill(std::size_t aRoom) override {
    rlimit const limit{aRoom, mBefore.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  }

  void clear() override { ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &mBefore), 0); }

 private:
  rlimit mBefore{};
  void (*mSignalBefore)(int) = nullptr;
};

std::string contentOf(std::string const& aPath) {
  std::ifstream stream(aPath, std::ios::binary);
  std::ostringstream content;
  content << stream.rdbuf();
  return content.str();
}

class BadDisk : public ::testing::Test {
 protected:
  using Body = std::function<void(Disk&)>;

  BadDisk() { std::filesystem::create_directories(mSet.writable()); }

  /// Runs the body on a small disk where that can be had, and on one with a limit in any case. Each
  /// run has a thread of its own, and the library no threads of before.
  void onEachDisk(Body const& aBody) {
    run([this, &aBody] {
      std::unique_ptr<Disk> const disk = SmallDisk::mountAt(mSet.writable());
      if (disk != nullptr) {
        aBody(*disk);
        Zelv::InterfaceFactory::terminate();
      }
    });
    run([&aBody] {
      LimitedDisk disk;
      aBody(disk);
      Zelv::InterfaceFactory::terminate();
    });
  }

  static void run(std::function<void()> const& aBody) {
    PCThread::ReleaseParked();
    std::thread(aBody).join();
    PCThread::ReleaseParked();
  }

  static Zelv::IAppData* start() {
    return dynamic_cast<Zelv::IAppData*>(Zelv::InterfaceFactory::getInterface(Zelv::IID_IAppData));
  }

  static std::string read(Zelv::IAppData& aTree) {
    Listener listener;
    GUID const id = aTree.requestData(cName, nullptr, &listener);
    EXPECT_TRUE(listener.waitFor(id));
    return listener.of(id)[0].value;
  }

  /// Writes and waits until the worker is past it. @return how often a failure was told.
  static std::size_t write(Zelv::IAppData& aTree, std::string const& aValue) {
    Listener listener;
    GUID const id = aTree.setData(cName, aValue, &listener, true);
    EXPECT_TRUE(listener.waitFor(aTree.requestData(cName, nullptr, &listener)));
    return listener.of(id).size();
  }

  std::string file() const { return contentOf(mSet.writable() + cFile); }

  TemporarySet mSet;
  LogCapture mLog;
};

TEST_F(BadDisk, FullOneKeepsTheOldFileAndReportsEachFailureOnce) {
  onEachDisk([this](Disk& aDisk) {
    Zelv::IAppData* tree = start();
    ASSERT_NE(tree, nullptr) << mLog.dump();
    ASSERT_EQ(write(*tree, "first"), 0U);
    std::string const before = file();
    ASSERT_THAT(before, HasSubstr("<Name>first</Name>"));
    for (std::size_t const room : {0U, 4096U, 32768U}) {
      aDisk.fill(room);
      EXPECT_EQ(write(*tree, std::string(room + 100, 'x')), 1U) << room;
      EXPECT_EQ(file(), before) << room;
      aDisk.clear();
    }
    EXPECT_GE(mLog.count(PCRealDebug::Error,
                         "GenericDataProvider::setData: File save failed, data not comitted."),
              3);
    // What failed is served from memory until the end, but never reached the disk.
    Zelv::InterfaceFactory::terminate();
    tree = start();
    ASSERT_NE(tree, nullptr) << mLog.dump();
    EXPECT_EQ(read(*tree), "first");
    EXPECT_EQ(write(*tree, "second"), 0U);
    EXPECT_THAT(file(), HasSubstr("<Name>second</Name>"));
  });
}

TEST_F(BadDisk, ReadOnlyOneServesAndKeepsItsFiles) {
  onEachDisk([this](Disk& aDisk) {
    Zelv::IAppData* tree = start();
    ASSERT_NE(tree, nullptr) << mLog.dump();
    ASSERT_EQ(write(*tree, "first"), 0U);
    Zelv::InterfaceFactory::terminate();
    std::string const before = file();
    aDisk.protect();
    tree = start();
    ASSERT_NE(tree, nullptr) << mLog.dump();
    EXPECT_EQ(read(*tree), "first");
    EXPECT_EQ(write(*tree, "second"), 1U);
    EXPECT_EQ(file(), before);
    aDisk.unprotect();
    EXPECT_EQ(write(*tree, "third"), 0U);
    EXPECT_THAT(file(), HasSubstr("<Name>third</Name>"));
  });
}

TEST_F(BadDisk, ReadOnlyAndEmptyOneStopsTheStart) {
  onEachDisk([this](Disk& aDisk) {
    for (auto const& entry : std::filesystem::directory_iterator(mSet.writable())) {
      std::filesystem::remove(entry);
    }
    aDisk.protect();
    EXPECT_EQ(start(), nullptr);
    aDisk.unprotect();
    EXPECT_NE(start(), nullptr) << mLog.dump();
  });
}

TEST_F(BadDisk, FullOneIsStartedOn) {
  onEachDisk([this](Disk& aDisk) {
    ASSERT_NE(start(), nullptr) << mLog.dump();
    Zelv::InterfaceFactory::terminate();
    aDisk.fill(0);
    Zelv::IAppData* const tree = start();
    ASSERT_NE(tree, nullptr) << mLog.dump();
    EXPECT_EQ(read(*tree), "");
    Zelv::InterfaceFactory::terminate();
    aDisk.clear();
  });
}

TEST_F(BadDisk, FullOneCannotBeSeeded) {
  onEachDisk([this](Disk& aDisk) {
    for (auto const& entry : std::filesystem::directory_iterator(mSet.writable())) {
      std::filesystem::remove(entry);
    }
    aDisk.fill(0);
    EXPECT_EQ(start(), nullptr);
    aDisk.clear();
    EXPECT_NE(start(), nullptr) << mLog.dump();
  });
}

}  // namespace
