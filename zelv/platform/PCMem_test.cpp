#include "zelv/platform/PCMem.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(PCMem, CopiesExactlyAsManyBytesAsTold) {
  std::string to = "........";
  PCMem::Copy(to.data() + 1, "abc\0def", 6);
  EXPECT_EQ(std::string(".abc\0de.", 8), to);
}

TEST(PCMem, FillsExactlyAsManyBytesAsTold) {
  std::string to = "........";
  PCMem::Set(to.data() + 1, 'x', 3);
  EXPECT_EQ(".xxx....", to);
}

TEST(PCMem, FillsWithTheLowByteOfTheValue) {
  unsigned char to[2] = {};
  PCMem::Set(to, 0x1ff, 1);
  EXPECT_EQ(0xff, to[0]);
  EXPECT_EQ(0, to[1]);
}

TEST(PCMem, AllowsNullPointersWithASizeOfZero) {
  char kept = 'k';
  PCMem::Copy(nullptr, nullptr, 0);
  PCMem::Set(nullptr, 1, 0);
  PCMem::Copy(&kept, nullptr, 0);
  EXPECT_EQ('k', kept);
}

}  // namespace
