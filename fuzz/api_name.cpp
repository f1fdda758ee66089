// API names as clients send them: in a directory with whatever may lie beside
// descriptions they lead to a description of that directory, or to none.

#include <sys/stat.h>

#include <filesystem>
#include <set>
#include <string>
#include <system_error>

#include "runner/DescriptionCache.h"
#include "runner/description_candidates.h"
#include "support/scratch.h"
#include "support/target.h"
#include "unit/LogCapture.h"
#include "util/WorkingDirectoryGuard.h"
#include "util/json_types.h"
#include "util/log_text.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

// Names that the seeds have, and what a search may come to from there.
constexpr const char* kAPIs[] = {"ORBO",       "ORBO.A",    "ORBO.A.B", "ORBO.A.B.C", ".ORBO",
                                 ".ORBO.A",    "ORBO.Link", ".",        "..",         "lib",
                                 "ORBO.Dir.A", "sub.A",     "A",        "sub/A",      "../outside"};

// Each file tells its name as the library of every API.
void WriteDescription(const std::string& path, const std::string& name) {
  std::string text = "{";
  for (const char* const api : kAPIs) {
    text.append(text.size() > 1 ? "," : "").append("\"").append(api);
    text += R"(":{"lib":")" + name + R"(","minVersion":1,"maxVersion":1,"methods":{}})";
  }
  WriteScratch(path, text + "}");
}

// The names of the files of the directory that can be read.
std::set<std::string> MakeDirectory() {
  std::set<std::string> readable = {"ORBO.Link.lib"};
  for (const std::string name :
       {"ORBO.lib", "ORBO.A.lib", "ORBO.A.B.lib", "A.B.C.D.E.lib", " .lib", "\xff.lib", "~.lib",
        "ORBO.\n.lib", ".ORBO.lib", ".ORBO.A.lib", "..lib", "...lib"}) {
    WriteDescription("web/" + name, name.find('\n') == std::string::npos ? name : "line");
    readable.insert(name);
  }
  for (const char* const name : {"web/.lib", "web/sub/A.lib", "web/ORBO.Dir.lib/A.lib"}) {
    WriteDescription(name, "elsewhere");
  }
  WriteDescription("outside.lib", "ORBO.Link.lib");
  const fs::path web = ScratchDirectory() + "/web";
  // The system's owner may keep a description elsewhere.
  fs::create_symlink("../outside.lib", web / "ORBO.Link.lib");
  fs::create_symlink("../web", web / "up");
  fs::create_symlink("ORBO.Loop.lib", web / "ORBO.Loop.lib");
  fs::create_symlink("nothing", web / "ORBO.Gone.lib");
  Require(mkfifo((web / "ORBO.Pipe.lib").c_str(), 0600) == 0);
  return readable;
}

}  // namespace

void TestInput(FuzzInput input) {
  static const std::set<std::string> kReadable = MakeDirectory();
  static const std::string kDirectory = ScratchDirectory() + "/web";
  const WorkingDirectoryGuard inside(kDirectory);
  Require(inside.IsEntered());
  const std::string api(input.TakeRest());
  const std::string path = ExistingCandidate(api);
  Require(path.empty() || api.find(path.substr(0, path.size() - 4)) == 0);
  for (const std::string& candidate : DescriptionCandidates(api)) {
    std::error_code error;
    Require(candidate.size() <= path.size() || !fs::exists(candidate, error));
  }

  const LogCapture log;
  DescriptionDefaults defaults;
  DescriptionCache cache(defaults);
  const bool is_loaded = cache.Load(api);
  Require(is_loaded == (kReadable.count(path) != 0) && cache.Load(api) == is_loaded);
  if (const Json::Value* const info = cache.Info(api)) {
    Require(JSON::At(*info, "lib") == Json::Value(path));
  }
  // Once, and on one short line.
  Require(log.lines().size() == (is_loaded || api.empty() ? 0U : 1U));
  for (const std::string& line : log.lines()) {
    Require(line == LogText(line, 320));
  }
}

}  // namespace ORBO
