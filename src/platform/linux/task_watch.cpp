#include "platform/linux/task_watch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace ORBO {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kWithoutNotices(50);
constexpr milliseconds kWithoutProcess(500);
constexpr milliseconds kLongest(60000);

// A record appears by a link, changes by a rename and goes by its deletion.
constexpr std::uint32_t kEvents =
    IN_MOVED_TO | IN_CREATE | IN_DELETE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

// Whether the notice is of the file `file`, or no more come or some got lost.
bool Concerns(const inotify_event& notice, const char* name, const std::string& file) {
  return (notice.mask & (IN_Q_OVERFLOW | IN_IGNORED | IN_DELETE_SELF | IN_MOVE_SELF)) != 0 ||
         (notice.len > 0 && file == name);
}

// The kernel takes 5 to 20 ms to close what notices come from, and the answer to a
// request would wait for it.  So the process keeps one for its next watch until its end.
struct Spare {
  int notices = -1;
  pid_t process = 0;  // a child's copy would share its notices with the parent
};
Spare spare;

int OpenNotices() {
  if (spare.notices >= 0 && spare.process == getpid()) {
    return std::exchange(spare.notices, -1);
  }
  return inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
}

void CloseNotices(int notices) {
  if (spare.notices >= 0 && spare.process == getpid()) {
    close(notices);
  } else {
    spare = {notices, getpid()};
  }
}

}  // namespace

TaskWatch::TaskWatch(const std::string& directory, const std::string& file)
    : file_(file), notices_(OpenNotices()), process_(-1) {
  watch_ = notices_.IsOpen() ? inotify_add_watch(notices_.get(), directory.c_str(), kEvents) : -1;
  if (watch_ < 0) {
    notices_.Reset(-1);
  }
}

TaskWatch::~TaskWatch() {
  if (notices_.IsOpen()) {
    inotify_rm_watch(notices_.get(), watch_);
    TakeNotices();
    CloseNotices(notices_.Release());
  }
}

// False if the process is gone.
bool TaskWatch::Follow(const ProcessIdentity& process) {
  if (process.pid == followed_.pid && process.start == followed_.start) {
    return true;
  }
  followed_ = process;
  // The C library's declaration of pidfd_open is none for C++.
  process_.Reset(static_cast<int>(syscall(SYS_pidfd_open, static_cast<pid_t>(process.pid), 0)));
  // Only now it is sure whose descriptor that is.
  return StateOf(process) != ProcessState::kGone;
}

// Whether a notice of the file was among those that have come.
bool TaskWatch::TakeNotices() {
  alignas(inotify_event) char buffer[4096];
  bool concerns = false;
  for (;;) {
    const ssize_t size = read(notices_.get(), buffer, sizeof buffer);
    if (size <= 0) {
      return concerns;
    }
    for (const char* next = buffer; next < buffer + size;) {
      inotify_event notice;
      std::memcpy(&notice, next, sizeof notice);
      concerns = concerns || Concerns(notice, next + sizeof notice, file_);
      next += sizeof notice + notice.len;
    }
  }
}

TaskWatch::Event TaskWatch::Wait(const ProcessIdentity& process, Clock::time_point deadline) {
  if (process.pid != 0 && !Follow(process)) {
    return Event::kEnd;
  }
  const milliseconds longest = !notices_.IsOpen()   ? kWithoutNotices
                               : !process_.IsOpen() ? kWithoutProcess
                                                    : kLongest;
  // Signals must not put off the look at what the system does not tell.
  const Clock::time_point end = std::min(deadline, Clock::now() + longest);
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
    if (left.count() <= 0) {
      return end == deadline ? Event::kTimeOver : Event::kChange;
    }
    // Negative descriptors are passed over.
    pollfd files[] = {{notices_.get(), POLLIN, 0}, {process_.get(), POLLIN, 0}};
    const int count = poll(files, 2, static_cast<int>(left.count()));
    if (count < 0 && errno != EINTR) {
      return Event::kTimeOver;
    }
    if (count > 0 && files[1].revents != 0) {
      return Event::kEnd;
    }
    if (count > 0 && TakeNotices()) {
      return Event::kChange;
    }
  }
}

}  // namespace ORBO
