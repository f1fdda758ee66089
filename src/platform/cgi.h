#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

// The platform's CGI layer: what it knows of the HTTP request that this process
// serves.

// The platform's record of one CGI request.  What it holds beyond this is the
// platform's business.
struct OrboCgi {
  // The Cookie header line as loaded last.
  std::string cookie_line;
};

// Sets up the CGI layer for this process and empties `*cgi`.  `name` is the
// empty string.  Completes the process environment with what stock web servers
// leave out: SCRIPT_URI, the URL of the request without its query, is derived
// from REQUEST_SCHEME (or HTTPS), HTTP_HOST and the path where the server did
// not set it.  Does nothing outside a CGI process.
void OrboCgiInit(const char* name, OrboCgi* cgi);

// Releases what `*cgi` holds; it may be set up again.
void OrboCgiFree(OrboCgi* cgi);

// Reads HTTP_COOKIE from the process environment into `*cgi`, replacing what
// was loaded before.
void OrboCgiLoadInCookies(OrboCgi* cgi);

// Deciphers a raw parameter line in place where the line as a whole is
// enciphered; percent-escapes stay, since the pairs are split before they are
// decoded.  `line` is writable and NUL-terminated; the result is never longer.
// 0 on failure.
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

// The largest body in bytes that a request other than an upload may have.
unsigned long long OrboCgiMaxBodySize();
