#include "check/check_path.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include "check/DescribedFile.h"
#include "check/defaults_rules.h"
#include "check/entry_rules.h"
#include "check/json_faults.h"
#include "check/library_rules.h"
#include "check/place_rules.h"
#include "check/read_rules.h"
#include "runner/DescriptionDefaults.h"
#include "runner/description_candidates.h"
#include "util/WorkingDirectoryGuard.h"

namespace ORBO::tool {
namespace {

bool IsDirectory(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// What lies in one directory and is checked together.
struct Selection {
  std::string directory;
  std::string shown;  // what findings put before names
  std::vector<std::string> names;
  bool is_whole;
};

// Works in the directory of the selection.
void CheckFiles(const Selection& selection, const CheckOptions& options, PathCheck& paths,
                CheckCounts& counts, Findings& findings) {
  CheckReading(selection.names, selection.shown, findings);
  DescriptionDefaults defaults;
  defaults.Read(kDefaultsFile);
  std::vector<std::unique_ptr<DescribedFile>> files;
  for (const std::string& name : selection.names) {
    ++counts.files;
    paths.Check(name);
    if (name == kDefaultsFile) {
      CheckDefaults(name, selection.shown + name, findings);
      continue;
    }
    std::unique_ptr<DescribedFile> file =
        DescribedFile::Read(name, selection.shown + name, findings);
    if (file == nullptr) {
      continue;
    }
    CheckJsonValues(file->source(), findings);
    for (const DescriptionFile::Entry& entry : file->entries()) {
      ++counts.apis;
      CheckPlaceOf(*file, entry, findings);
      CheckEntry(*file, entry, defaults, findings);
    }
    files.push_back(std::move(file));
  }
  if (options.opens_libraries) {
    counts.libraries += CheckLibraries(files, selection.is_whole, options.seconds, paths, findings);
  }
}

Selection SelectFile(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == std::string::npos ? "" : path.substr(0, slash + 1);
  return {directory.empty() ? "." : directory, directory, {path.substr(directory.size())}, false};
}

// The descriptions and the defaults of the working directory.
std::vector<std::string> SelectAll(const std::string& shown, Findings& findings) {
  std::vector<std::string> names = DescriptionFileNames();
  if (names.empty()) {
    findings.Warn({shown}, "there is no description here, no file *.lib");
  }
  if (access(kDefaultsFile, F_OK) == 0) {
    names.emplace_back(kDefaultsFile);
  } else {
    findings.Warn({shown + kDefaultsFile},
                  "there are no defaults: nobody may call an API without an allowUser of its own");
  }
  return names;
}

}  // namespace

void CheckPath(const std::string& path, const CheckOptions& options, PathCheck& paths,
               CheckCounts& counts, Findings& findings) {
  const bool is_directory = IsDirectory(path);
  Selection selection = SelectFile(path);
  if (is_directory) {
    selection = {path, path.back() == '/' ? path : path + "/", {}, true};
    paths.Check(path);
  }
  const WorkingDirectoryGuard directory(selection.directory);
  if (!directory.IsEntered()) {
    findings.Error({path}, std::string("cannot be reached: ") + std::strerror(errno));
    return;
  }
  if (is_directory) {
    selection.names = SelectAll(selection.shown, findings);
  }
  CheckFiles(selection, options, paths, counts, findings);
}

}  // namespace ORBO::tool
