#include "platform/linux/fact_cache.h"

#include <sys/stat.h>
#include <unistd.h>

#include <ctime>

#include "platform/cgi.h"
#include "platform/linux/base64url.h"
#include "platform/linux/private_file.h"

namespace ORBO {
namespace {

constexpr std::time_t kLifetime = 30;
constexpr std::size_t kLongestName = 250;
constexpr char kTrue[] = "1";

// Without a trailing "/".
std::string Directory() { return OrboCgiSessionDirectory() + "/.facts"; }

std::string PathOf(const std::string& name) { return Directory() + "/" + name; }

// The file's name; "" for a question that is too long for one.
std::string Name(const std::string& question) {
  std::string name = Base64Url(question);
  return name.size() <= kLongestName ? name : "";
}

bool IsRecent(const struct stat& status) {
  const std::time_t age = std::time(nullptr) - status.st_mtim.tv_sec;
  return age >= 0 && age <= kLifetime;
}

}  // namespace

bool RecallFact(const std::string& question, bool& fact) {
  const std::string name = Name(question);
  struct stat status;
  if (name.empty() || lstat(PathOf(name).c_str(), &status) != 0 || !S_ISREG(status.st_mode) ||
      status.st_uid != geteuid() || !IsRecent(status)) {
    return false;
  }
  // The size is the answer: looking at the file is all it takes.
  fact = status.st_size != 0;
  return true;
}

void KeepFact(const std::string& question, bool fact) {
  const std::string name = Name(question);
  struct stat status;
  // The sessions' directory is not made here: it would be this process's user's.
  if (name.empty() || stat(OrboCgiSessionDirectory().c_str(), &status) != 0 ||
      status.st_uid != geteuid()) {
    return;
  }
  unlink(PathOf(name).c_str());
  CreatePrivateFile(Directory(), name, fact ? kTrue : "", Durability::kProcess);
}

void SweepFacts() {
  for (const std::string& name : PrivateFileNames(Directory(), kLifetime)) {
    unlink(PathOf(name).c_str());
  }
  SweepPrivateDirectory(Directory());
}

}  // namespace ORBO
