#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "zelv/Zelv.h"

namespace {

TEST(ZelvHeader, IncludesEveryHeaderOfTheInterfaces) {
  std::filesystem::path const library = ZELV_TEST_SOURCES "zelv";
  std::ifstream file(library / "Zelv.h");
  std::ostringstream content;
  content << file.rdbuf();
  int headers = 0;
  for (auto const& entry : std::filesystem::directory_iterator(library / "interfaces")) {
    if (entry.path().extension() == ".h") {
      ++headers;
      std::string const line =
          "#include \"zelv/interfaces/" + entry.path().filename().string() + "\"\n";
      EXPECT_NE(content.str().find(line), std::string::npos) << line;
    }
  }
  EXPECT_GT(headers, 40);
}

}  // namespace
