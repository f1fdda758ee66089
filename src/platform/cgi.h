#pragma once

#include <sys/types.h>

#include <cstddef>
#include <map>
#include <string>

// The platform's CGI layer: what it knows of the HTTP request that this process
// serves.

struct QLIBSZHASH;

// The platform's record of one CGI request.  What it holds beyond this is the
// platform's business.
struct OrboCgi {
  // The fields of an upload read so far; null until there are any.  See upload.h.
  QLIBSZHASH* parameters = nullptr;

  // The Cookie header line as the client sent it, and as loaded last.
  std::string client_cookie_line;
  std::string cookie_line;

  // Checks with this record never count as activity of the session.
  bool allow_timeout = false;

  // Of the session that was checked last: its file, its time-out in minutes, 1
  // when it is exempt from the address check, and its user's language.
  std::string session_file;
  int timeout = 0;
  int skip_check_ip = 0;
  std::string language;
  // Its options by number; see OrboCgiGetOption.
  std::map<int, std::string> options;
};

// How a session is to be checked.
struct OrboCgiAuthOptions {
  int checks;         // 15: all of form, file, address and time-out; all are made anyway
  int allow_timeout;  // 1: the call does not count as activity, else 0
};

// Sets up the CGI layer for this process and empties `*cgi`.  `name` is the
// empty string.  Completes the process environment with what stock web servers
// leave out: SCRIPT_URI, the URL of the request without its query, is derived
// from REQUEST_SCHEME (or HTTPS), HTTP_HOST and the path where the server did
// not set it; outside a CGI process the environment stays as it is.  What HTTP_COOKIE
// holds now is the client's own cookie line.
void OrboCgiInit(const char* name, OrboCgi* cgi);

// Releases what `*cgi` holds; it may be set up again.  With the record of the request
// that this process serves go the files that its upload left behind.
void OrboCgiFree(OrboCgi* cgi);

// Reads HTTP_COOKIE from the process environment into `*cgi`, replacing what
// was loaded before.
void OrboCgiLoadInCookies(OrboCgi* cgi);

// Opens the enciphered line (see cipher.h) that the value of a pair of the raw parameter
// line may be, in place: the pair goes, and the pairs of the enciphered line come last,
// so that they hold where a name is there twice.  Percent-escapes stay, since the pairs
// are split before they are decoded.  `line` is writable and NUL-terminated; the result
// is never longer.  0 on failure, which more than one such pair is too.
int OrboCgiDetectAndDecryptParamLine(char* line);

// Writes the address of the client as text (inet_ntop form) into `buffer`.
// Non-zero on success, 0 when the address is not known or does not fit.
int OrboCgiGetRemoteIP(char* buffer, std::size_t size);

// The user id of the user `user_name` of the session `session_id`; (uid_t)-1 when
// there is no such user.
uid_t OrboCgiUIDGet(const char* session_id, const char* user_name);

// Takes leave of what the request's body still holds, after the answer.  Never
// waits for the client.
void OrboCgiDiscardBody();
// Sets up `*cgi` for a session check outside the entry, with the session time-out
// `timeout` in minutes.  While another record is set up by OrboCgiInit, the client's
// own cookie line is that one's.  The last two arguments name the list of current
// users and are the platform's business.
void OrboCgiInitEx(OrboCgi* cgi, int timeout, bool allow_timeout, const char* user_list,
                   const char* reserved);

// Checks the session `session_id` and writes its user's name into `user` of
// `size` bytes.  1 when it is valid; -1 timed out, -2 unknown, -3 another client
// address, -4 its file cannot be used, -5 the request comes from another site
// and is recognised by its cookie alone.  On success `*cgi` carries the session's
// facts, and the session counts as active now unless `allow_timeout` is set.  A
// session that has timed out is never admitted.
int OrboCgiIsAuthorizedEx(OrboCgi* cgi, const char* session_id, char* user, std::size_t size,
                          const OrboCgiAuthOptions* options, int flags);

inline constexpr int kCgiOptionSkipCheckIP = 1;  // "1" when set
inline constexpr int kCgiOptionWebAPI = 6;       // the web-API privilege text
inline constexpr int kCgiOptionApplication = 7;
inline constexpr int kCgiOptionTimeout = 10;  // minutes, decimal

// Option `option` of the checked session as text, or null.  Valid while `*cgi`
// is not changed.
const char* OrboCgiGetOption(const OrboCgi* cgi, int option);

// The interface language of the checked session's user; "enu" by default.
std::string OrboCgiGetLang(const OrboCgi* cgi);

// The directory of the session files, without a trailing "/".
std::string OrboCgiSessionDirectory();

// The system's session time-out in minutes; 0 means that sessions never time
// out.
int QLIBCConfGetKEPTimeout();

// The largest body in bytes that a request other than an upload may have.
unsigned long long OrboCgiMaxBodySize();
