#include "testing/serve_call.h"

#include <fcntl.h>
#include <stdio_ext.h>
#include <syslog.h>
#include <unistd.h>
#include <webapi/WebEntry.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <streambuf>
#include <string_view>

#include "util/Descriptor.h"
#include "util/read_file.h"
#include "util/write_file.h"

namespace ORBO {
namespace {

constexpr char kVariables[] = "variables";
constexpr char kInput[] = "input";
constexpr char kOutput[] = "output";

// What std::cout writes to in a program of its own; a test may have led it elsewhere.
class StandardOutput : public std::streambuf {
 protected:
  int_type overflow(int_type character) override {
    return traits_type::eq_int_type(character, traits_type::eof()) ? traits_type::not_eof(character)
                                                                   : std::fputc(character, stdout);
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    return static_cast<std::streamsize>(
        std::fwrite(text, 1, static_cast<std::size_t>(size), stdout));
  }
  int sync() override { return std::fflush(stdout); }
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class TestEntry final : public WebEntry {
 public:
  explicit TestEntry(bool skip_permission) : skip_permission_(skip_permission) {}

  bool SkipPermission(APIRequest* request) override {
    return skip_permission_ || WebEntry::SkipPermission(request);
  }

 private:
  bool skip_permission_;
};

#pragma GCC diagnostic pop

bool WriteFile(const std::string& path, std::string_view text) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  return file.IsOpen() && WriteAll(file.get(), text);
}

// Makes the written variables, "name=value" each with a NUL behind, the environment.
bool EnterEnvironment(const SystemTree& tree) {
  std::string text;
  if (!ReadWholeFile(tree.CallFile(kVariables), text) || clearenv() != 0) {
    return false;
  }
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find('\0', begin);
    const std::string variable = text.substr(begin, end - begin);
    const std::size_t equals = variable.find('=');
    setenv(variable.substr(0, equals).c_str(), variable.c_str() + equals + 1, 1);
    begin = end + 1;
  }
  return setenv("WEBAPI_ROOT", tree.Root().c_str(), 1) == 0 &&
         setenv("WEBAPI_LOG_STDERR", "1", 1) == 0;
}

bool EnterStreams(const SystemTree& tree) {
  const Descriptor input(open(tree.CallFile(kInput).c_str(), O_RDONLY | O_CLOEXEC));
  const Descriptor output(
      open(tree.CallFile(kOutput).c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  __fpurge(stdin);
  __fpurge(stdout);
  return input.IsOpen() && output.IsOpen() && dup2(input.get(), STDIN_FILENO) >= 0 &&
         dup2(output.get(), STDOUT_FILENO) >= 0;
}

}  // namespace

bool WriteCall(const SystemTree& tree, const CgiRequest& request) {
  // What an earlier call has left running may still write to its own output.
  unlink(tree.CallFile(kOutput).c_str());
  std::string variables;
  for (const auto& [name, value] : request.variables) {
    variables.append(name).append("=").append(value.c_str()).append(1, '\0');
  }
  return WriteFile(tree.CallFile(kVariables), variables) &&
         WriteFile(tree.CallFile(kInput), request.body);
}

std::string ReadOutput(const SystemTree& tree) {
  std::string text;
  ReadWholeFile(tree.CallFile(kOutput), text);
  return text;
}

void ServeCall(const SystemTree& tree, bool skip_permission) {
  if (!EnterEnvironment(tree) || !EnterStreams(tree) ||
      chdir(tree.WebAPIDirectory().c_str()) != 0) {
    std::perror("cannot begin the call");
    _exit(EXIT_FAILURE);
  }
  openlog(nullptr, LOG_PID | LOG_PERROR, 0);
  StandardOutput output;
  std::cout.clear();
  std::streambuf* const previous = std::cout.rdbuf(&output);
  {
    TestEntry entry(skip_permission);
    entry.Run(Json::Value());
  }
  std::cout.flush();
  std::cout.rdbuf(previous);
  std::fflush(stdout);
}

}  // namespace ORBO
