#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <vector>

#include "Arguments.h"
#include "output.h"
#include "printable.h"
#include "scaffold_files.h"
#include "util/Descriptor.h"
#include "util/write_file.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {
    {"directory", "DIR", "where to put the project (default: named after the API)"},
    kNoMoreOptions,
};

constexpr char kDetails[] =
    "\n"
    "API has two to five parts between dots, each of letters, digits and \"_\" and with a\n"
    "letter in front.  The project has a handler library with one method, the API's\n"
    "description and a test, and is built by CMake with the package webapi-KEP5.  Nothing\n"
    "that is there is overwritten.\n"
    "\n"
    "Examples:\n"
    "  webapi new ORBO.Weather\n"
    "  webapi new Acme.Printer.Queue --directory src/queue\n";

constexpr std::size_t kLongestName = 100;
constexpr std::ptrdiff_t kFewestParts = 2;
// The descriptions of longer names are not found by the whole name.
constexpr std::ptrdiff_t kMostParts = 5;

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Whether the system itself has a description of that name.
bool IsOwnApi(const std::string& name) {
  return std::string_view("|" WEBAPI_OWN_APIS "|").find("|" + name + "|") != std::string::npos;
}

// Also false where the project's description would replace one of the system's.
bool IsApiName(const std::string& name) {
  char before = '.';
  for (const char c : name) {
    const bool is_inner = c == '.' || c == '_' || (c >= '0' && c <= '9');
    if (!IsLetter(c) && (before == '.' || !is_inner)) {
      return false;
    }
    before = c;
  }
  const auto parts = std::count(name.begin(), name.end(), '.') + 1;
  return before != '.' && name.size() <= kLongestName && parts >= kFewestParts &&
         parts <= kMostParts && !IsOwnApi(name);
}

// The words that stand in the templates, and the names of files, for an API.
struct Names {
  std::string api;
  std::string project;  // "orbo_weather"
  std::string file;     // "Weather"
};

Names NamesOf(const std::string& api) {
  std::string project = api;
  for (char& c : project) {
    c = c == '.' ? '_' : c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return {api, project, api.substr(api.rfind('.') + 1)};
}

// `text` with every {{word}} replaced.
std::string Expand(std::string_view text, const Names& names) {
  std::string expanded;
  for (std::size_t begin; (begin = text.find("{{")) != std::string_view::npos;) {
    const std::size_t end = text.find("}}", begin);
    const std::string_view word = text.substr(begin + 2, end - begin - 2);
    expanded.append(text.substr(0, begin));
    expanded.append(word == "api" ? names.api : word == "project" ? names.project : names.file);
    text.remove_prefix(end + 2);
  }
  return expanded.append(text);
}

struct ProjectFile {
  const char* name;
  const char* text;
};

constexpr ProjectFile kFiles[] = {
    {"CMakeLists.txt", kProjectFile}, {"{{file}}.cpp", kHandlerFile},
    {"{{file}}_test.cpp", kTestFile}, {"{{api}}.lib", kDescriptionFile},
    {"README.md", kReadmeFile},       {".gitignore", kIgnoreFile},
};

// Writes a file that is not there yet.  False with `errno` set, and there is none.
bool WriteNew(const std::string& path, const std::string& text) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!file.IsOpen()) {
    return false;
  }
  const bool is_written = WriteAll(file.get(), text);
  if (!is_written) {
    const int error = errno;
    unlink(path.c_str());
    errno = error;
  }
  return is_written;
}

// Writes all files or none, after a complaint.
bool WriteProject(const std::string& directory, const Names& names) {
  std::vector<std::string> written;
  for (const ProjectFile& file : kFiles) {
    const std::string path = directory + "/" + Expand(file.name, names);
    if (!WriteNew(path, Expand(file.text, names))) {
      Complain("cannot write " + path + ": " + std::strerror(errno));
      for (const std::string& other : written) {
        unlink(other.c_str());
      }
      return false;
    }
    written.push_back(path);
  }
  return true;
}

bool MakeProject(const std::string& directory, const Names& names) {
  const bool is_new = mkdir(directory.c_str(), 0777) == 0;
  if (!is_new && errno != EEXIST) {
    Complain("cannot make " + directory + ": " + std::strerror(errno));
    return false;
  }
  if (WriteProject(directory, names)) {
    return true;
  }
  if (is_new) {
    rmdir(directory.c_str());
  }
  return false;
}

ExitCode Run(const Arguments& arguments) {
  const std::string& api = arguments.operands().front();
  if (!IsApiName(api)) {
    return ComplainOfUsage("not a name for an API: " + api);
  }
  const Names names = NamesOf(api);
  const std::string directory = arguments.Value("directory", names.project);
  const std::string shown = Printable(directory);
  return MakeProject(directory, names) &&
                 Print("Made " + shown + ".  Build and test it:\n  cd " + shown +
                       "\n  cmake -B build\n  cmake --build build\n  ctest --test-dir build\n")
             ? kDone
             : kFailed;
}

}  // namespace

const Command kNew = {
    "new", "Makes the project of a handler library", "API", 1, 1, kOptions, kDetails, Run, nullptr};

}  // namespace ORBO::tool
