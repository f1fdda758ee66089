#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ORBO {

// Login sessions, one file each below /run/orbo/sessions.  A session's id is the
// file's name and the secret that a client shows; the file's modification time is
// the time of the last activity.  Files and directory belong to the user that the
// CGI programs run as.

struct Session {
  std::string user;
  std::string address;      // of the client that logged in, inet_ntop form; "" for none
  std::string application;  // "" for none
  std::string webapi;       // web-API privilege text
  std::string language;     // "enu" by default
  bool skip_address_check = false;
  // Minutes; 0 never; -1 the system's.  Of a session that was read, the one that holds.
  int timeout = -1;
  std::int64_t created = 0;      // seconds since the epoch
  std::int64_t last_active = 0;  // seconds since the epoch; read from the file's time
};

enum class SessionState : int {
  kValid = 1,
  kTimedOut = -1,
  kUnknown = -2,
  kUnusable = -4,  // no regular file of the right user, or its content is malformed
};

// Whether `id` has the form of a session id: nothing else ever becomes a path.
bool IsSessionId(const std::string& id);

// Makes a session with a new id; its creation and activity are now.  Sweeps before.
// False, with `errno` set, if it cannot be stored whole; EINVAL if it has no user or
// is too large.
bool CreateSession(const Session& session, std::string& id);

// Reads a session and judges its time-out.  `out` is filled for kValid and
// kTimedOut.  A last activity in the future, as after a clock step, counts as
// now and is set to it.
SessionState ReadSession(const std::string& id, Session& out);

// Makes now the time of the last activity.
bool TouchSession(const std::string& id);

// False if there was none.
bool RemoveSession(const std::string& id);

struct ListedSession {
  std::string id;
  Session session;
  bool timed_out;
};

// The readable sessions, in order of creation.
std::vector<ListedSession> ListSessions();

// Deletes the files of sessions that timed out long ago (a day) and what is left
// over from interrupted writes.
void SweepSessions();

// The name under which a session may be shown and named by an administrator: it
// tells one session from another and opens none.  "" where the crypto module cannot
// be used.
std::string SessionHandle(const std::string& id);

}  // namespace ORBO
