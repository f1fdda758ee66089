#include "CommandRun.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "util/Descriptor.h"
#include "util/json_text.h"

namespace tools {
namespace {

using ORBO::Descriptor;

std::string Content(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace

int StartCommand(const std::vector<std::string>& arguments, int input, int output, int errors,
                 const Child& child) {
  std::vector<std::string> words = {child.program.empty() ? TOOLS_COMMAND : child.program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  const pid_t process = fork();
  if (process == 0) {
    if (isatty(input) == 0) {
      setsid();  // away from the terminal of whoever runs the tests
    }
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    if (child.user != 0 &&
        (setgroups(0, nullptr) != 0 || setgid(child.user) != 0 || setuid(child.user) != 0)) {
      _exit(126);
    }
    execv(pointers[0], pointers.data());
    _exit(127);
  }
  return process;
}

int WaitForCommand(int process) {
  int status = 0;
  if (waitpid(process, &status, 0) != process) {
    return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

CommandTest::CommandTest() {
  std::string path = testing::TempDir() + "webapi_tools_XXXXXX";
  if (mkdtemp(path.data()) == nullptr) {
    std::abort();
  }
  root_ = path;
  std::filesystem::create_directory(root_ + "/etc");
  setenv("WEBAPI_ROOT", root_.c_str(), 1);
}

CommandTest::~CommandTest() {
  unsetenv("WEBAPI_ROOT");
  std::error_code error;
  std::filesystem::remove_all(root_, error);
}

Result CommandTest::Run(const std::vector<std::string>& arguments, const std::string& input) const {
  return Run(arguments, input, Child());
}

Result CommandTest::RunAs(unsigned user, const std::vector<std::string>& arguments) const {
  // The directory of the build may be closed to others.
  const std::string program = root_ + "/webapi";
  std::filesystem::copy_file(TOOLS_COMMAND, program);
  EXPECT_EQ(chmod(root_.c_str(), 0755), 0);
  return Run(arguments, "", {program, user});
}

Result CommandTest::Run(const std::vector<std::string>& arguments, const std::string& input,
                        const Child& child) const {
  const std::string base = root_ + "/";
  std::ofstream(base + "input", std::ios::binary) << input;
  const int make = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
  const Descriptor in(open((base + "input").c_str(), O_RDONLY | O_CLOEXEC));
  const Descriptor out(open((base + "output").c_str(), make, 0600));
  const Descriptor errors(open((base + "errors").c_str(), make, 0600));
  Result result;
  result.exit_code =
      WaitForCommand(StartCommand(arguments, in.get(), out.get(), errors.get(), child));
  result.output = Content(base + "output");
  result.errors = Content(base + "errors");
  return result;
}

std::string CommandTest::Output(const std::vector<std::string>& arguments) const {
  const Result result = Run(arguments);
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.errors, "");
  return result.output;
}

Json::Value CommandTest::Document(const std::vector<std::string>& arguments) const {
  Json::Value value;
  const std::string output = Output(arguments);
  EXPECT_TRUE(ORBO::JSON::Parse(output, value)) << output;
  return value;
}

std::string CommandTest::ReadFile(const std::string& path) const { return Content(root_ + path); }

}  // namespace tools
