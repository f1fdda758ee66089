// A whole request.  The lines of an input up to an empty one are CGI variables, the rest
// is the body.

#include <dlfcn.h>
#include <stdio_ext.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>
#include <webapi/WebEntry.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "platform/process.h"
#include "support/cgi_answer.h"
#include "support/process_state.h"
#include "support/scratch.h"
#include "support/target.h"
#include "util/Descriptor.h"
#include "util/json_text.h"
#include "util/read_file.h"
#include "util/write_file.h"

// A process cannot be forked while it searches; callers must cope with that.
pid_t QLIBCProcFork() {
  errno = EAGAIN;
  return -1;
}

namespace ORBO {
namespace {

constexpr char kWebAPI[] = "usr/orbo/orboman/webapi";
// The session that a request may name.
constexpr char kSession[] = "sAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA";

constexpr char kDescription[] = R"({
  "ORBO.Fuzz": {
    "lib": ")" WEBAPI_FUZZ_HANDLER R"(", "minVersion": 1, "maxVersion": 2, "authLevel": 0,
    "methods": {
      "1": ["act", {"upload": {"allowUpload": true}}, {"send": {"allowDownload": true}},
            {"load": {"allowUpload": true, "deferUpload": true}}],
      "2": ["act"]
    }
  },
  "ORBO.Fuzz.Member": {
    "lib": ")" WEBAPI_FUZZ_HANDLER R"(", "minVersion": 1, "maxVersion": 1,
    "methods": {"1": ["act"]}, "allowUser": ["admin.local", "normal.local"]
  },
  "ORBO.Fuzz.Visitor": {
    "lib": ")" WEBAPI_FUZZ_HANDLER R"(", "minVersion": 1, "maxVersion": 1,
    "methods": {"1": ["act"]}, "authLevel": 2
  }
})";

std::string Uploads() { return ScratchDirectory() + "/tmp"; }

// A system with the handler, entered.
bool EnterSystem() {
  const std::string directory = std::string(kWebAPI) + "/";
  WriteScratch(directory + "ORBO.Fuzz.lib", kDescription);
  WriteScratch(directory + "lib.def", R"({"authLevel": 1, "priority": 0})");
  WriteScratch(directory + "ORBO.Entry.lib", R"({"ORBO.Entry.Request": {"lib": "built-in",
      "minVersion": 1, "maxVersion": 1, "authLevel": 0, "methods": {"1": ["request"]}}})");
  WriteScratch(std::string("run/orbo/sessions/") + kSession, R"({"user":"root","timeout":0})");
  std::filesystem::create_directory(Uploads());
  Require(chmod((ScratchDirectory() + "/run/orbo/sessions").c_str(), 0700) == 0);
  Require(chdir((ScratchDirectory() + "/" + kWebAPI).c_str()) == 0);
  openlog(program_invocation_short_name, 0, 0);
  // Stays open, since the search looks at the coverage of all that was ever open.
  Require(dlopen(WEBAPI_FUZZ_HANDLER, RTLD_NOW) != nullptr);
  return true;
}

// What a web server hands on of a request.
bool IsOfRequest(const std::string& name) {
  static const std::set<std::string> kNames = {
      "QUERY_STRING", "REQUEST_METHOD",        "CONTENT_LENGTH", "CONTENT_TYPE",
      "REQUEST_URI",  "REQUEST_SCHEME",        "HTTPS",          "REMOTE_ADDR",
      "SCRIPT_NAME",  "MOD_X_SENDFILE_ENABLED"};
  return kNames.count(name) != 0 || name.compare(0, 5, "HTTP_") == 0;
}

void EnterEnvironment(FuzzInput& lines) {
  std::map<std::string, std::string> variables = {
      {"GATEWAY_INTERFACE", "CGI/1.1"}, {"HTTP_HOST", "localhost"},
      {"REMOTE_ADDR", "127.0.0.1"},     {"REQUEST_METHOD", "GET"},
      {"SCRIPT_NAME", "/entry.cgi"},    {"WEBAPI_ROOT", ScratchDirectory()}};
  for (std::string line; !(line = lines.TakeLine()).empty();) {
    const std::string name = line.substr(0, line.find('='));
    if (IsOfRequest(name)) {
      variables[name] = line.substr(std::min(name.size() + 1, line.size())).c_str();
    }
  }
  clearenv();
  for (const auto& [name, value] : variables) {
    setenv(name.c_str(), value.c_str(), 1);
  }
}

// A standard descriptor that is a file in memory while this lives.
class StandardFile {
 public:
  StandardFile(int descriptor, std::string_view content)
      : descriptor_(descriptor), previous_(dup(descriptor)), file_(memfd_create("", 0)) {
    Require(WriteAll(file_.get(), content) && lseek(file_.get(), 0, SEEK_SET) == 0);
    Require(dup2(file_.get(), descriptor_) == descriptor_);
  }
  ~StandardFile() { dup2(previous_.get(), descriptor_); }

  std::string Content() const {
    std::string text;
    Require(lseek(file_.get(), 0, SEEK_SET) == 0 && ReadUpTo(file_.get(), 1ULL << 30, text));
    return text;
  }

 private:
  int descriptor_;
  Descriptor previous_;
  Descriptor file_;
};

// The answer of the whole program.
CgiAnswer Serve(FuzzInput request) {
  EnterEnvironment(request);
  const std::string_view body = request.TakeRest();
  if (!body.empty()) {
    setenv("CONTENT_LENGTH", std::to_string(body.size()).c_str(), 0);
  }
  std::fflush(stdout);
  const StandardFile input(STDIN_FILENO, body);
  const StandardFile output(STDOUT_FILENO, "");
  __fpurge(stdin);
  std::clearerr(stdin);
  std::cin.clear();
  const std::string before = ProcessState();
  WebEntry().Run(Json::Value());
  std::cin.clear();
  Require(before == ProcessState());
  std::fflush(stdout);
  Require(std::filesystem::is_empty(Uploads()));
  return CgiAnswer(output.Content());
}

void Check(const CgiAnswer& answer) {
  for (const char* once : {"Content-type", "Cache-Control"}) {
    Require(answer.Values(once).size() == 1);
  }
  for (const char* at_most_once : {"Status", "Location", "x-request-error", "Content-Length"}) {
    Require(answer.Values(at_most_once).size() <= 1);
  }
  Json::Value body;
  // A file, which is sent here or by the web server, has one.
  if (answer.Values("ETag").empty()) {
    // One line.
    Require(answer.Values("Pragma").size() == 1 && JSON::Parse(answer.body, body) &&
            answer.body.find('\n') == answer.body.size() - 1);
    CodeOf(body);
  } else if (std::string_view(getenv("REQUEST_METHOD")) == "HEAD") {
    Require(answer.body.empty());
  } else {
    const auto lengths = answer.Values("Content-Length");
    Require(std::to_string(answer.body.size()) == (lengths.empty() ? "0" : lengths[0]));
  }
}

}  // namespace

void TestInput(FuzzInput input) {
  static const bool kReady = EnterSystem();
  Require(kReady);
  Check(Serve(input));
}

}  // namespace ORBO
