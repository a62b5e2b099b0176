#include "zelv/core/DocumentFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeFiles;
using Platform::Fake::Logged;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class DocumentFileTest : public ::testing::Test {
 protected:
  DocumentFileTest() {
    directories.putWritable("Things.xml", "<Before/>");
    document.loadFromString("<Things><A>1</A></Things>");
  }
  ~DocumentFileTest() override { FakeFiles::Reset(); }

  bool save() {
    return DocumentFile::save(document, directories.writable() + "Things.xml", "Class::operation");
  }
  std::string file() const { return directories.getWritable("Things.xml"); }

  Platform::Fake::TemporaryDirectories directories;
  Platform::Fake::LogCapture log;
  Infrastructure::HierarchicalDB document;
};

TEST_F(DocumentFileTest, TakesThePlaceOfTheFileAndLeavesNothingBeside) {
  EXPECT_TRUE(save());
  EXPECT_THAT(file(), HasSubstr("<A>1</A>"));
  EXPECT_THAT(directories.listWritable(), ElementsAre("Things.xml"));
}

TEST_F(DocumentFileTest, StaysAsItWasWhenTheDocumentCannotBeWritten) {
  FakeFiles::FailNth(FakeFiles::Sync);
  EXPECT_FALSE(save());
  EXPECT_EQ(file(), "<Before/>");
  EXPECT_THAT(directories.listWritable(), ElementsAre("Things.xml"));
}

TEST_F(DocumentFileTest, OnlyTellsTheLogThatTheFileWasNotReplaced) {
  FakeFiles::FailNth(FakeFiles::Rename);
  EXPECT_TRUE(save());
  EXPECT_EQ(file(), "<Before/>");
  EXPECT_THAT(directories.listWritable(), ElementsAre("Things.xml"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "Class::operation: File '" + directories.writable() +
                                                  "Things.xml' could not be replaced."));
}

}  // namespace
}  // namespace Zelv
