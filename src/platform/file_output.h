#pragma once

#include <cstdio>
#include <string>

// Results of HTTPFileOutputer::Output beside failures.
inline constexpr int kFileOutputDone = 0;
// The answer was begun and is not whole: the client hung up, the file became shorter
// or could not be read any further.  The connection shows it to the client.
inline constexpr int kFileOutputBrokenOff = 1;

// Answers an HTTP request with a file.  Stateless.
//
// Header lines that the caller has written to std::cout and holds back there
// (util/HeldOutput.h) belong to the answer: a header that they name is not written a
// second time, and where they name Status or Content-Length, the caller has decided on
// the whole content and the request's conditions and ranges do not count.  The
// operations add what is missing, the empty line and the content.  std::cout is flushed
// before anything is written past it.
//
// An answer is what RFC 9110 asks for: Content-Length, Last-Modified, a strong ETag;
// 304 and 412 by the request's conditions (section 13); for GET one range of bytes
// (206, or 416), also under If-Range; several ranges or malformed ones are ignored; no
// content for HEAD.  Unless they are there, "Cache-Control: private, no-cache" keeps
// one user's file out of shared caches and "X-Content-Type-Options: nosniff" keeps
// browsers to its type.
//
// Results: kFileOutputDone when the answer, whatever its status, is written whole;
// kFileOutputBrokenOff; or a negated errno when nothing has been written, so that the
// caller can still give another answer.  A client that hangs up raises no signal.
class HTTPFileOutputer {
 public:
  // The media type for a file by the extension of its name, in any case;
  // "application/octet-stream" where that is unknown.
  static std::string GetMimeType(const char* file_name);

  // The regular file `path`; anything else is a failure (-EISDIR, -EINVAL), and a pipe
  // in its place does not stop the process.  While the variable
  // MOD_X_SENDFILE_ENABLED is "yes" in any case, the web server is told the path by
  // the header X-Sendfile and adds the content, its length and ranges, unless the path
  // cannot stand in that header as it is.  A type that is null, empty or cannot stand in
  // a header counts as "application/octet-stream".
  static int Output(const char* path, const char* mime_type);

  // The rest of the open file from its position on; the position stays.  What is no
  // regular file is read to its end, with neither length nor conditions nor ranges.
  // `file_name` may be empty; the file is not looked up by it.
  static int Output(std::FILE* file, const char* file_name, const char* mime_type);
};
