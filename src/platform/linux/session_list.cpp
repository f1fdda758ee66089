#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <tuple>
#include <utility>

#include "platform/cgi.h"
#include "platform/linux/base64url.h"
#include "platform/linux/crypto.h"
#include "platform/linux/fact_cache.h"
#include "platform/linux/private_file.h"
#include "platform/linux/session_store.h"

namespace ORBO {
namespace {

constexpr std::int64_t kSecondsPerMinute = 60;
constexpr std::int64_t kKept = 86400;
constexpr std::size_t kHandleBytes = 9;

bool IsForgotten(const std::string& id) {
  Session session;
  return ReadSession(id, session) == SessionState::kTimedOut &&
         std::time(nullptr) - session.last_active > session.timeout * kSecondsPerMinute + kKept;
}

}  // namespace

std::vector<ListedSession> ListSessions() {
  std::vector<ListedSession> sessions;
  for (std::string& id : PrivateFileNames(OrboCgiSessionDirectory())) {
    Session session;
    const SessionState state = ReadSession(id, session);
    if (state == SessionState::kValid || state == SessionState::kTimedOut) {
      sessions.push_back({std::move(id), std::move(session), state == SessionState::kTimedOut});
    }
  }
  std::sort(sessions.begin(), sessions.end(), [](const ListedSession& a, const ListedSession& b) {
    return std::tie(a.session.created, a.id) < std::tie(b.session.created, b.id);
  });
  return sessions;
}

void SweepSessions() {
  const std::string directory = OrboCgiSessionDirectory();
  for (const std::string& id : PrivateFileNames(directory, kKept)) {
    if (IsForgotten(id)) {
      RemoveSession(id);
    }
  }
  SweepPrivateDirectory(directory);
  SweepFacts();
}

std::string SessionHandle(const std::string& id) {
  std::string digest;
  return HmacSHA256("webapi-KEP5 session handle", id, digest)
             ? "h" + Base64Url(digest.substr(0, kHandleBytes))
             : "";
}

}  // namespace ORBO
