#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "CommandRun.h"

namespace tools {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

using New = CommandTest;

TEST_F(New, MakesAWholeProjectOrNothing) {
  Output("new Acme.Weather_2.Now");
  for (const char* file : {"CMakeLists.txt", "Now.cpp", "Now_test.cpp", "Acme.Weather_2.Now.lib",
                           "README.md", ".gitignore"}) {
    const std::string text = ReadFile(std::string("/acme_weather_2_now/") + file);
    EXPECT_NE(text, "") << file;
    EXPECT_THAT(text, Not(HasSubstr("{{"))) << file;
  }
  fs::create_directory(root() + "/other");
  std::ofstream(root() + "/other/README.md") << "mine";
  for (const char* directory : {"acme_weather_2_now", "other", "none/none", "other/README.md"}) {
    const Result result = Run(std::string("new Acme.Weather_2.Now --directory ") + directory);
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_THAT(result.errors, HasSubstr(directory));
  }
  EXPECT_THAT(Output("new A.B --directory \"$(printf 'a\\033b')\""), HasSubstr("Made a?b."));
  EXPECT_EQ(ReadFile("/other/README.md"), "mine");
  EXPECT_EQ(std::distance(fs::directory_iterator(root() + "/other"), {}), 1);
}

}  // namespace
}  // namespace tools
