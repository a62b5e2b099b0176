#include "zelv/Zelv.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace Zelv {
namespace {

std::filesystem::path folder() {
  return std::filesystem::path(__FILE__).parent_path();
}

TEST(ZelvHeader, IncludesEveryHeaderOfTheInterfaces) {
  std::ifstream file(folder().parent_path() / "Zelv.h");
  std::ostringstream content;
  content << file.rdbuf();
  int headers = 0;
  for (auto const& entry : std::filesystem::directory_iterator(folder())) {
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
}  // namespace Zelv
