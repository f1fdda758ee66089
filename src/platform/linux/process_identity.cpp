#include "platform/linux/process_identity.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

#include "util/Descriptor.h"
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

// Sixty bits of the random id that the system has until it goes down.
std::int64_t ReadBoot() {
  std::string text;
  if (!ReadWholeFile("/proc/sys/kernel/random/boot_id", text)) {
    return 0;
  }
  std::string digits;
  for (const char c : text) {
    if (c != '-' && digits.size() < 15) {
      digits += c;
    }
  }
  return static_cast<std::int64_t>(std::strtoull(digits.c_str(), nullptr, 16));
}

std::int64_t CurrentBoot() {
  static const std::int64_t kBoot = ReadBoot();
  return kBoot;
}

bool IsGone(std::int64_t pid) { return kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH; }

}  // namespace

bool IdentifyProcess(std::int64_t pid, ProcessIdentity& out) {
  Stat stat;
  if (!IsProcessId(pid)) {
    return false;
  }
  if (ReadStat(pid, stat) ? HasEnded(stat) : IsGone(pid)) {
    return false;
  }
  out = {pid, stat.start, CurrentBoot()};
  return true;
}

ProcessState StateOf(const ProcessIdentity& process) {
  if (!IsProcessId(process.pid)) {
    return ProcessState::kGone;
  }
  if (process.boot != 0 && CurrentBoot() != 0 && process.boot != CurrentBoot()) {
    return ProcessState::kGone;
  }
  Stat stat;
  if (process.start != 0 && ReadStat(process.pid, stat)) {
    return stat.start != process.start || HasEnded(stat) ? ProcessState::kGone
                                                         : ProcessState::kRunning;
  }
  // A confined process may be kept from /proc, or from what it says of other users.
  return IsGone(process.pid) ? ProcessState::kGone : ProcessState::kUnknown;
}

bool IsProcessOf(std::int64_t pid, uid_t user) {
  std::string text;
  if (!ReadWholeFile("/proc/" + std::to_string(pid) + "/status", text)) {
    return false;
  }
  // The first of four is the one who has started it, whatever it was given since.
  return text.find("\nUid:\t" + std::to_string(user) + "\t") != std::string::npos;
}

int SignalProcess(const ProcessIdentity& process, int signal) {
  const pid_t pid = static_cast<pid_t>(process.pid);
  const Descriptor opened(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
  // Only now it is sure whose descriptor that is.
  if (StateOf(process) != ProcessState::kRunning) {
    return ESRCH;
  }
  if (opened.IsOpen() && syscall(SYS_pidfd_send_signal, opened.get(), signal, nullptr, 0) == 0) {
    return 0;
  }
  // The system may be too old for that, or keep it from this process.
  const bool has_ended = opened.IsOpen() && errno == ESRCH;
  return has_ended ? ESRCH : kill(pid, signal) == 0 ? 0 : errno;
}

}  // namespace ORBO
