#pragma once

#include <gtest/gtest.h>
#include <json/value.h>

#include <string>
#include <vector>

namespace tools {

struct Result {
  int exit_code;  // negative: ended by that signal
  std::string output;
  std::string errors;
};

struct Child {
  std::string program;  // the command itself if empty
  unsigned user = 0;    // 0: who this process is
};

// Starts the command in a child that has `input`, `output` and `errors` as standard
// streams.  The process id, or -1.
int StartCommand(const std::vector<std::string>& arguments, int input, int output, int errors,
                 const Child& child = {});
// The exit code of the child; negative if a signal ended it.
int WaitForCommand(int process);

// A root directory, which WEBAPI_ROOT names, and the command run below it.
class CommandTest : public ::testing::Test {
 protected:
  CommandTest();
  ~CommandTest() override;

  Result Run(const std::vector<std::string>& arguments, const std::string& input = "") const;

  // The same as the user `user`, for whom it is made accessible.  Needs root.
  Result RunAs(unsigned user, const std::vector<std::string>& arguments) const;

  // The output of a run that has to succeed without complaints.
  std::string Output(const std::vector<std::string>& arguments) const;
  // The same as JSON.
  Json::Value Document(const std::vector<std::string>& arguments) const;

  const std::string& root() const { return root_; }
  std::string ReadFile(const std::string& path) const;

 private:
  Result Run(const std::vector<std::string>& arguments, const std::string& input,
             const Child& child) const;

  std::string root_;
};

}  // namespace tools
