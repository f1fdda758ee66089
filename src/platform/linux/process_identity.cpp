#include "platform/linux/process_identity.h"

#include <sys/types.h>

#include <cerrno>
#include <csignal>
#include <limits>
#include <string>
#include <string_view>

#include "util/number_text.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

constexpr int kFieldsFromStateToStart = 19;

struct Stat {
  char state = 0;
  std::int64_t start = 0;
};

// Reads the fields 3 and 22 of proc(5).  The second one, the command's name, may hold
// blanks and parentheses; nothing after it does.
bool ParseStat(std::string_view text, Stat& out) {
  const std::size_t name_end = text.rfind(')');
  if (name_end == std::string_view::npos || text.size() < name_end + 3) {
    return false;
  }
  text.remove_prefix(name_end + 2);
  const char state = text.front();
  for (int i = 0; i < kFieldsFromStateToStart; ++i) {
    const std::size_t blank = text.find(' ');
    if (blank == std::string_view::npos) {
      return false;
    }
    text.remove_prefix(blank + 1);
  }
  JSON::Integer start;
  out.state = state;
  return JSON::ReadInteger(text.substr(0, text.find(' ')), start) &&
         JSON::ToSigned(start, out.start);
}

bool IsProcessId(std::int64_t pid) { return pid > 0 && pid <= std::numeric_limits<pid_t>::max(); }

bool ReadStat(std::int64_t pid, Stat& out) {
  std::string text;
  return ReadWholeFile("/proc/" + std::to_string(pid) + "/stat", text) && ParseStat(text, out);
}

bool HasEnded(const Stat& stat) {
  return stat.state == 'Z' || stat.state == 'X' || stat.state == 'x';
}

}  // namespace

bool IdentifyProcess(std::int64_t pid, ProcessIdentity& out) {
  Stat stat;
  if (!IsProcessId(pid) || !ReadStat(pid, stat) || HasEnded(stat)) {
    return false;
  }
  out = {pid, stat.start};
  return true;
}

ProcessState StateOf(const ProcessIdentity& process) {
  if (!IsProcessId(process.pid)) {
    return ProcessState::kGone;
  }
  Stat stat;
  if (process.start != 0 && ReadStat(process.pid, stat)) {
    return stat.start != process.start || HasEnded(stat) ? ProcessState::kGone
                                                         : ProcessState::kRunning;
  }
  // A confined process may be kept from /proc, or from what it says of other users.
  const bool is_gone = kill(static_cast<pid_t>(process.pid), 0) != 0 && errno == ESRCH;
  return is_gone ? ProcessState::kGone : ProcessState::kUnknown;
}

}  // namespace ORBO
