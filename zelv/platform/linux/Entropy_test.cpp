#include "zelv/platform/Entropy.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <thread>

namespace Zelv::Platform {
namespace {

using Bytes = std::array<unsigned char, 16>;

Bytes draw() {
  Bytes bytes{};
  EXPECT_TRUE(Entropy::Fill(bytes.data(), bytes.size()));
  return bytes;
}

TEST(LinuxEntropy, GivesOtherBytesToEachThread) {
  Bytes other{};
  std::thread([&other] { other = draw(); }).join();
  EXPECT_NE(draw(), other);
}

TEST(LinuxEntropy, GivesOtherBytesToAChildOfTheProcess) {
  draw();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  pid_t const child = fork();
  if (child == 0) {
    Bytes const drawn = draw();
    _exit(write(ends[1], drawn.data(), drawn.size()) == 16 ? 0 : 1);
  }
  Bytes fromChild{};
  EXPECT_EQ(read(ends[0], fromChild.data(), fromChild.size()), 16);
  int status = 1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  close(ends[0]);
  close(ends[1]);
  EXPECT_NE(draw(), fromChild);
}

}  // namespace
}  // namespace Zelv::Platform
