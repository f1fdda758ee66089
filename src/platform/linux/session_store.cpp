#include "platform/linux/session_store.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

#include "platform/cgi.h"
#include "platform/linux/key_name.h"
#include "platform/linux/private_file.h"
#include "platform/linux/session_text.h"

namespace ORBO {
namespace {

constexpr char kIdLetter = 's';
constexpr std::size_t kIdBytes = 32;
constexpr std::size_t kLargestFile = 16384;
constexpr std::int64_t kSecondsPerMinute = 60;

std::string SessionPath(const std::string& id) { return OrboCgiSessionDirectory() + "/" + id; }

bool HasTimedOut(const Session& session, std::int64_t now) {
  return session.timeout != 0 && now - session.last_active > session.timeout * kSecondsPerMinute;
}

}  // namespace

bool IsSessionId(const std::string& id) { return IsKeyName(id, kIdLetter, kIdBytes); }

bool CreateSession(const Session& session, std::string& id) {
  Session stored = session;
  stored.created = std::time(nullptr);
  const std::string text = ToSessionText(stored);
  if (!IsStorableUser(session.user) || text.size() > kLargestFile) {
    errno = EINVAL;
    return false;
  }
  SweepSessions();
  std::string new_id = NewKeyName(kIdLetter, kIdBytes);
  if (!CreatePrivateFile(OrboCgiSessionDirectory(), new_id, text, Durability::kProcess)) {
    return false;
  }
  id = std::move(new_id);
  return true;
}

SessionState ReadSession(const std::string& id, Session& out) {
  if (!IsSessionId(id)) {
    return SessionState::kUnknown;
  }
  const std::string path = SessionPath(id);
  std::string text;
  std::int64_t modified = 0;
  const FileState state = ReadPrivateFile(path, kLargestFile, text, modified);
  if (state != FileState::kRead) {
    return state == FileState::kMissing ? SessionState::kUnknown : SessionState::kUnusable;
  }
  Session session;
  if (!FromSessionText(text, session)) {
    return SessionState::kUnusable;
  }
  const std::int64_t now = std::time(nullptr);
  if (modified > now) {
    // Left alone, a session would outlive its time-out by as much as the clock was
    // set back.
    TouchPrivateFile(path);
  }
  session.last_active = std::min(modified, now);
  if (session.timeout < 0) {
    session.timeout = QLIBCConfGetKEPTimeout();
  }
  out = std::move(session);
  return HasTimedOut(out, now) ? SessionState::kTimedOut : SessionState::kValid;
}

bool TouchSession(const std::string& id) {
  if (!IsSessionId(id)) {
    errno = ENOENT;
    return false;
  }
  return TouchPrivateFile(SessionPath(id));
}

bool RemoveSession(const std::string& id) {
  return IsSessionId(id) && unlink(SessionPath(id).c_str()) == 0;
}

}  // namespace ORBO
