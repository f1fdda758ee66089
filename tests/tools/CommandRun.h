#pragma once

#include <gtest/gtest.h>
#include <json/value.h>

#include <string>

namespace tools {

struct Result {
  int exit_code;
  std::string output;
  std::string errors;
};

// A root directory, which WEBAPI_ROOT names, and the command run below it.
class CommandTest : public ::testing::Test {
 protected:
  CommandTest();
  ~CommandTest() override;

  // `arguments` are words for a shell, which works in the root directory.  The command
  // is away from the terminal of whoever runs the tests.
  Result Run(const std::string& arguments, const std::string& input = "",
             const std::string& program = TOOLS_COMMAND) const;

  // The output of a run that has to succeed without complaints.
  std::string Output(const std::string& arguments) const;
  // The same as JSON.
  Json::Value Document(const std::string& arguments) const;

  const std::string& root() const { return root_; }
  std::string ReadFile(const std::string& path) const;

 private:
  std::string root_;
};

}  // namespace tools
