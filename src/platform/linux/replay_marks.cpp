#include "platform/linux/replay_marks.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <string_view>

#include "platform/linux/parameter_cipher.h"
#include "platform/linux/private_directory.h"
#include "platform/linux/private_file.h"
#include "util/Descriptor.h"
#include "util/log.h"
#include "util/number_text.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "replay_marks.cpp";
constexpr char kDirectory[] = "/run/orbo/replays";
constexpr mode_t kFileMode = 0600;

constexpr std::int64_t kSecond = 1000;
// Twice the time for which messages are accepted: clocks are set.
constexpr std::int64_t kKept = 2 * kMessageWindow / kSecond;
// A clock that is set back comes to the times of its messages again.
constexpr std::int64_t kKeptAhead = 86400;

// Anybody may send messages, and the directory lies in memory.
constexpr std::size_t kMostMarks = 65536;
constexpr std::size_t kManyMarks = kMostMarks / 2;
constexpr std::size_t kMostDeleted = 4096;
// More than any page puts into one request.
constexpr int kMostInASecond = 64;
// Enough for one call, by a text and a pair: where there are many marks, few requests
// are not to use up the rest.
constexpr int kMostOfMany = 3;

// Its time is that of the last sweep, its size tells how much room that has left.
constexpr char kSweepFile[] = ".swept";
constexpr std::time_t kSweepPause = 10;
constexpr off_t kRoom = 0;
constexpr off_t kLittleRoom = 1;
constexpr off_t kNoRoom = 2;

// Whether this process has asked less than `most` times for a second.  The first time
// that it has not is logged: one request may hold many messages.
bool MayMark(int most) {
  using Clock = std::chrono::steady_clock;
  static Clock::time_point begin;
  static int count = 0;
  static bool is_logged = false;
  const Clock::time_point now = Clock::now();
  if (now - begin >= std::chrono::seconds(1)) {
    begin = now;
    count = 0;
    is_logged = false;
  }
  if (++count <= most) {
    return true;
  }
  if (!is_logged) {
    is_logged = true;
    Log(LOG_ERR, "%s:%d too many enciphered messages", kSource, __LINE__);
  }
  return false;
}

// A mark's name begins with the second in which its message was sent.
std::string MarkName(const std::string& name, std::int64_t sent) {
  return std::to_string(sent / kSecond) + "-" + name;
}

bool IsOver(std::string_view mark, std::int64_t now) {
  JSON::Integer sent;
  std::int64_t seconds = 0;
  if (!JSON::ReadInteger(mark.substr(0, mark.find('-')), sent) || !JSON::ToSigned(sent, seconds)) {
    return true;
  }
  const std::int64_t age = now / kSecond - seconds;
  return age > kKept || age < -kKeptAhead;
}

// Deletes marks whose time is over, not all of them at once; how many are left.
std::size_t DeleteOldMarks(const PrivateDirectory& directory, std::int64_t now) {
  std::size_t deleted = 0;
  std::size_t left = 0;
  for (const std::string& mark : PrivateFileNames(RootedPath(kDirectory))) {
    if (deleted < kMostDeleted && IsOver(mark, now) &&
        unlinkat(directory.get(), mark.c_str(), 0) == 0) {
      ++deleted;
    } else {
      ++left;
    }
  }
  return left;
}

// An open file of the directory, which is made where it is missing.
int OpenFile(const PrivateDirectory& directory, const char* name, int flags) {
  return openat(directory.get(), name, O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC | flags,
                kFileMode);
}

// How much room there is for marks, as the last sweep has found; sweeps where that was
// some time ago.
off_t Room(const PrivateDirectory& directory, std::int64_t now) {
  struct stat status;
  if (fstatat(directory.get(), kSweepFile, &status, AT_SYMLINK_NOFOLLOW) == 0) {
    const std::time_t age = std::time(nullptr) - status.st_mtim.tv_sec;
    if (age >= 0 && age < kSweepPause) {
      return status.st_size;
    }
  }
  const Descriptor file(OpenFile(directory, kSweepFile, 0));
  // First the time, so that others do not sweep as well.
  if (!file.IsOpen() || !directory.GiveToOwner(file.get()) || futimens(file.get(), nullptr) != 0) {
    return kNoRoom;
  }
  const std::size_t count = DeleteOldMarks(directory, now);
  const off_t room = count < kManyMarks ? kRoom : count < kMostMarks ? kLittleRoom : kNoRoom;
  return ftruncate(file.get(), room) == 0 ? room : kNoRoom;
}

int MostInASecond(off_t room) {
  return room == kRoom ? kMostInASecond : room == kLittleRoom ? kMostOfMany : 0;
}

}  // namespace

bool MarkMessage(const std::string& name, std::int64_t sent, std::int64_t now) {
  const PrivateDirectory directory(RootedPath(kDirectory));
  if (!directory.IsOpen()) {
    Log(LOG_ERR, "%s:%d cannot mark messages: %s", kSource, __LINE__, std::strerror(errno));
    return false;
  }
  if (!MayMark(MostInASecond(Room(directory, now)))) {
    return false;
  }
  const Descriptor mark(OpenFile(directory, MarkName(name, sent).c_str(), O_EXCL));
  if (mark.IsOpen()) {
    return directory.GiveToOwner(mark.get());
  }
  if (errno != EEXIST) {
    Log(LOG_ERR, "%s:%d cannot mark a message: %s", kSource, __LINE__, std::strerror(errno));
  }
  return false;
}

}  // namespace ORBO
