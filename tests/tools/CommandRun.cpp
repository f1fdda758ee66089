#include "CommandRun.h"

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "util/json_text.h"

namespace tools {

CommandTest::CommandTest() : root_(testing::TempDir() + "webapi_tools_XXXXXX") {
  if (mkdtemp(root_.data()) == nullptr) {
    std::abort();
  }
  std::filesystem::create_directory(root_ + "/etc");
  setenv("WEBAPI_ROOT", root_.c_str(), 1);
}

CommandTest::~CommandTest() {
  unsetenv("WEBAPI_ROOT");
  std::error_code error;
  std::filesystem::remove_all(root_, error);
}

Result CommandTest::Run(const std::string& arguments, const std::string& input,
                        const std::string& program) const {
  std::ofstream(root_ + "/input", std::ios::binary) << input;
  const std::string line =
      "cd " + root_ + " && setsid --wait " + program + " < input > output 2> errors " + arguments;
  const int status = std::system(line.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile("/output"), ReadFile("/errors")};
}

std::string CommandTest::Output(const std::string& arguments) const {
  const Result result = Run(arguments);
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.errors, "");
  return result.output;
}

Json::Value CommandTest::Document(const std::string& arguments) const {
  Json::Value value;
  const std::string output = Output(arguments);
  EXPECT_TRUE(ORBO::JSON::Parse(output, value)) << output;
  return value;
}

std::string CommandTest::ReadFile(const std::string& path) const {
  std::ifstream file(root_ + path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tools
