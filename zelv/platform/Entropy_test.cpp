#include "zelv/platform/Entropy.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using Zelv::Platform::Entropy;

TEST(Entropy, GivesOtherBytesEachTime) {
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) {
    std::string bytes(16, '\0');
    ASSERT_TRUE(Entropy::Fill(bytes.data(), bytes.size()));
    seen.insert(bytes);
  }
  EXPECT_EQ(1000U, seen.size());
}

TEST(Entropy, FillsExactlyAsManyBytesAsTold) {
  std::array<char, 64> buffer{};
  std::array<char, 64> const zeros{};
  ASSERT_TRUE(Entropy::Fill(buffer.data() + 16, 32));
  EXPECT_EQ(std::string(zeros.data(), 16), std::string(buffer.data(), 16));
  EXPECT_EQ(std::string(zeros.data(), 16), std::string(buffer.data() + 48, 16));
  EXPECT_NE(std::string(zeros.data(), 32), std::string(buffer.data() + 16, 32));
}

TEST(Entropy, Gives256BytesAtMost) {
  std::array<char, 257> buffer{};
  EXPECT_TRUE(Entropy::Fill(buffer.data(), 256));
  EXPECT_FALSE(Entropy::Fill(buffer.data(), 257));
  EXPECT_EQ('\0', buffer[256]);
}

TEST(Entropy, GivesNothingWhenNothingIsAsked) {
  EXPECT_TRUE(Entropy::Fill(nullptr, 0));
}

TEST(Entropy, MayBeAskedOnSeveralThreads) {
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      std::array<char, 16> buffer;
      for (int round = 0; round < 100; ++round) {
        EXPECT_TRUE(Entropy::Fill(buffer.data(), buffer.size()));
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
}

}  // namespace
