#include "platform/linux/login_throttle.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>

#include "platform/linux/platform_conf.h"
#include "platform/linux/private_directory.h"
#include "util/Descriptor.h"
#include "util/log.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "login_throttle.cpp";
constexpr char kDirectory[] = "/run/orbo/logins";
constexpr char kFile[] = "counters";

constexpr std::int64_t kSecond = 1000;  // times are in milliseconds
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kLongestWait = 30 * kSecond;
constexpr int kUnusableWait = 60;  // seconds

// The file is an array of counters, first those of users, then those of addresses.
// Each name has its place by its hash: two that share one are slowed together, and
// no number of names makes the file grow.
constexpr std::uint64_t kSlots = 8192;
constexpr std::uint32_t kSharedTag = 0;

struct Counter {
  std::uint32_t failures;
  std::uint32_t tag;  // of the name that all failures are of, else kSharedTag
  std::int64_t last;  // the time of the last failure
  std::int64_t next;  // when the next attempt is free
};
static_assert(sizeof(Counter) == 24, "the layout of the file, which outlives a process");

struct Limits {
  std::uint32_t user_attempts;
  std::uint32_t address_attempts;
  std::int64_t lock;
};

Limits ReadLimits() {
  Limits limits;
  limits.user_attempts = static_cast<std::uint32_t>(NumberSetting("login_attempts", 5, 1, 1000));
  limits.address_attempts =
      static_cast<std::uint32_t>(NumberSetting("login_address_attempts", 20, 1, 100000));
  limits.lock = NumberSetting("login_lock_minutes", 5, 1, 1440) * kMinute;
  return limits;
}

// Not the wall clock: setting that must not free anybody.
std::int64_t Now() {
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return std::int64_t{time.tv_sec} * kSecond + time.tv_nsec / 1000000;
}

// How long the next attempt has to wait after `failures`.
std::int64_t WaitAfter(std::uint32_t failures, std::uint32_t attempts, std::int64_t lock) {
  if (failures >= attempts) {
    return lock;
  }
  const std::uint32_t slowed = failures - std::min(failures, attempts / 2);
  if (slowed == 0) {
    return 0;
  }
  return std::min(kSecond << std::min(slowed - 1, 5U), kLongestWait);
}

std::uint64_t Hash(const std::string& text) {
  std::uint64_t hash = 0xcbf29ce484222325U;  // FNV-1a
  for (const char c : text) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
  }
  return hash ^ (hash >> 32);
}

// Directory services take names in any case.
std::string Fold(std::string name) {
  for (char& c : name) {
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return name;
}

// One IPv6 client has a whole network of addresses to try from.
std::string Network(const std::string& address) {
  in6_addr ipv6{};
  if (inet_pton(AF_INET6, address.c_str(), &ipv6) != 1) {
    return address;
  }
  return std::string(reinterpret_cast<const char*>(ipv6.s6_addr), 8);
}

// A counter within the open file.
class Slot {
 public:
  Slot(int file, std::uint64_t first, const std::string& name, std::uint32_t attempts)
      : file_(file), attempts_(attempts) {
    const std::uint64_t hash = Hash(name);
    place_ = static_cast<off_t>((first + hash % kSlots) * sizeof(Counter));
    tag_ = std::max(static_cast<std::uint32_t>(hash >> 32), kSharedTag + 1);
  }

  // Reads the counter and mends what the course of time has made of it.  What lies
  // in the future comes from before a restart of the machine.
  bool Load(std::int64_t now, std::int64_t lock) {
    const ssize_t count = pread(file_, &counter_, sizeof counter_, place_);
    if (count != static_cast<ssize_t>(sizeof counter_)) {
      counter_ = Counter{};
    } else if (counter_.last > now) {
      counter_.last = now;
    }
    counter_.next = std::min(counter_.next, counter_.last + lock);
    if (now - counter_.last >= 2 * lock) {
      counter_ = Counter{};
    }
    return count >= 0;
  }
  bool Store() const {
    return pwrite(file_, &counter_, sizeof counter_, place_) ==
           static_cast<ssize_t>(sizeof counter_);
  }

  std::int64_t WaitAt(std::int64_t now) const {
    return std::max<std::int64_t>(counter_.next - now, 0);
  }
  bool IsLocked() const { return counter_.failures >= attempts_; }

  void AddFailure() {
    counter_.tag = counter_.failures == 0 || counter_.tag == tag_ ? tag_ : kSharedTag;
    ++counter_.failures;
  }
  // What others have failed at meanwhile keeps its wait.
  void TakeFailure(std::int64_t lock) {
    counter_.failures -= std::min(counter_.failures, 1U);
    counter_.next =
        std::min(counter_.next, counter_.last + WaitAfter(counter_.failures, attempts_, lock));
  }
  // Takes all failures if they are of this name alone, else one.
  void Clear(std::int64_t lock) {
    if (counter_.tag == tag_) {
      counter_ = Counter{};
    } else {
      TakeFailure(lock);
    }
  }
  // An attempt that somebody's success has cleared counts again.
  void KeepFailure() {
    if (counter_.failures == 0) {
      AddFailure();
    }
  }
  void SetTimes(std::int64_t now, std::int64_t lock) {
    counter_.last = now;
    counter_.next = now + WaitAfter(counter_.failures, attempts_, lock);
  }

 private:
  int file_;
  std::uint32_t attempts_;
  off_t place_;
  std::uint32_t tag_;
  Counter counter_{};
};

// Opens the file of counters, and makes it if it is missing.  False with `errno`
// set.
bool OpenCounters(Descriptor& file) {
  const PrivateDirectory directory(RootedPath(kDirectory));
  if (!directory.IsOpen()) {
    return false;
  }
  file.Reset(openat(directory.get(), kFile, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
  return file.IsOpen() && directory.GiveToOwner(file.get());
}

// Runs `change` on the two counters under the lock and stores them.  False, and
// logged, if the counters cannot be used.
template <typename Change>
bool WithCounters(const std::string& user, const std::string& address, Change change) {
  const Limits limits = ReadLimits();
  Descriptor file(-1);
  if (OpenCounters(file) && flock(file.get(), LOCK_EX) == 0) {
    const std::int64_t now = Now();
    Slot by_user(file.get(), 0, Fold(user), limits.user_attempts);
    Slot by_address(file.get(), kSlots, Network(address), limits.address_attempts);
    if (by_user.Load(now, limits.lock) && by_address.Load(now, limits.lock)) {
      change(by_user, by_address, now, limits.lock);
      if (by_user.Store() && by_address.Store()) {
        return true;
      }
    }
  }
  Log(LOG_ERR, "%s:%d cannot use the login counters: %s", kSource, __LINE__, std::strerror(errno));
  return false;
}

}  // namespace

int SecondsUntilLogin(const std::string& user, const std::string& address) {
  std::int64_t wait = 0;
  const auto reserve = [&wait](Slot& by_user, Slot& by_address, std::int64_t now,
                               std::int64_t lock) {
    wait = std::max(by_user.WaitAt(now), by_address.WaitAt(now));
    if (wait > 0) {
      return;
    }
    for (Slot* const slot : {&by_user, &by_address}) {
      slot->AddFailure();
      slot->SetTimes(now, lock);
    }
  };
  const bool counted = WithCounters(user, address, reserve);
  return counted ? static_cast<int>((wait + kSecond - 1) / kSecond) : kUnusableWait;
}

bool NoteLoginFailure(const std::string& user, const std::string& address) {
  bool locked = false;
  const auto renew = [&locked](Slot& by_user, Slot& by_address, std::int64_t now,
                               std::int64_t lock) {
    for (Slot* const slot : {&by_user, &by_address}) {
      slot->KeepFailure();
      slot->SetTimes(now, lock);
      locked = locked || slot->IsLocked();
    }
  };
  WithCounters(user, address, renew);
  return locked;
}

void NoteLoginSuccess(const std::string& user, const std::string& address) {
  const auto clear = [](Slot& by_user, Slot& by_address, std::int64_t /*now*/, std::int64_t lock) {
    by_user.Clear(lock);
    by_address.TakeFailure(lock);
  };
  WithCounters(user, address, clear);
}

void NoteLoginAbandoned(const std::string& user, const std::string& address) {
  const auto take = [](Slot& by_user, Slot& by_address, std::int64_t /*now*/, std::int64_t lock) {
    by_user.TakeFailure(lock);
    by_address.TakeFailure(lock);
  };
  WithCounters(user, address, take);
}

}  // namespace ORBO
