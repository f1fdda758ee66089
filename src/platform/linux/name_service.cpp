#include "platform/linux/name_service.h"

#include <grp.h>
#include <pwd.h>

#include <cerrno>
#include <vector>

namespace ORBO {
namespace {

constexpr std::size_t kFirstSize = 1024;
// Groups of many thousand members still fit.
constexpr std::size_t kLargestSize = std::size_t{4} << 20;

// Asks by one of the get..nam_r operations, with a buffer that grows as far as
// the entry needs.  Null if there is no entry.
template <typename Entry>
const Entry* LookUp(int (*ask)(const char*, Entry*, char*, std::size_t, Entry**), const char* name,
                    Entry& entry, std::vector<char>& buffer) {
  if (name == nullptr || *name == '\0') {
    return nullptr;
  }
  for (std::size_t size = kFirstSize; size <= kLargestSize; size *= 4) {
    buffer.resize(size);
    Entry* found = nullptr;
    const int error = ask(name, &entry, buffer.data(), buffer.size(), &found);
    if (error != ERANGE && error != EINTR) {
      return error == 0 ? found : nullptr;
    }
  }
  return nullptr;
}

}  // namespace

uid_t UserId(const char* name) {
  passwd entry{};
  std::vector<char> buffer;
  return LookUp(getpwnam_r, name, entry, buffer) != nullptr ? entry.pw_uid : kNoUser;
}

gid_t GroupId(const char* name) {
  group entry{};
  std::vector<char> buffer;
  return LookUp(getgrnam_r, name, entry, buffer) != nullptr ? entry.gr_gid : kNoGroup;
}

}  // namespace ORBO
