#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The body of an upload (multipart/form-data, RFC 7578), read from standard input.
//
// The loaders continue one stream, in whatever order they are called: leading
// fields, then a file into a directory, or everything at once.  A loader that
// failed leaves the stream useless, and every later one fails with the same code.
// A body that ends early is never a success: neither before its final boundary nor
// before the length that the web server announced.
//
// Of several fields of one name the last counts, and a stored file more than any
// field of its name.  A file field in which nothing was chosen (no name, no
// content) is left out.  A stored file is "field" for its path and "field.name" for
// the name that the client gave it: the part after the last "/" or "\", empty where
// that is "." or "..".  The next files of the same field are "field.2", "field.3"
// and so on.
//
// Stored files have mode 0600 and names that nobody can guess.  One that cannot be
// stored whole is removed.  Those that are still where they were stored are removed
// when the request's record is freed, when the process ends, and when a signal ends
// it; a process that this one starts removes none.  OrboCgiSweepUploads removes those
// of a process that was killed.

struct OrboCgi;
struct QLIBSZHASH;

// Results of the loaders.
inline constexpr int kUploadLoaded = 1;
inline constexpr int kUploadCutShort = -1;     // the body ended early
inline constexpr int kUploadMalformed = -3;    // no multipart body of fields and files
inline constexpr int kUploadNoLength = -4;     // no usable CONTENT_LENGTH
inline constexpr int kUploadNoBoundary = -5;   // CONTENT_TYPE has no usable boundary
inline constexpr int kUploadTooMuch = -7;      // more or larger fields or files than allowed
inline constexpr int kUploadReadFailed = -10;  // standard input cannot be read
inline constexpr int kUploadStoreFailed = -11;
inline constexpr int kUploadNoRoom = -12;    // the disk, the quota or the file is full
inline constexpr int kUploadNoMemory = -13;  // or the callback for progress threw an exception

// Called with the bytes of the body read so far and its length: about every
// hundredth of the body, at most every 64 KiB and at least every MiB, and at its end.
using OrboCgiUploadProgress = void (*)(unsigned long long done, unsigned long long total);

struct OrboCgiUploadState {
  unsigned long long size = 0;  // of the next file; see OrboCgiLoadUploadParams
  int result = 0;               // of the last loader
};

// Positions in the body, in bytes.
struct OrboCgiBodyPositions {
  std::uint64_t next = 0;  // where what was not loaded yet begins, its boundary included
  std::uint64_t end = 0;   // the length of the body
};

// Reads the fields in front of the next file part, or of the end of the body, into
// the table of `*cgi`, which is made where it is missing.  All of them are read:
// `count` and `flags` are the platform's business.  Writes the name of that file's
// field into `buffer` of `size` bytes where it fits, else "".
int OrboCgiLoadUploadNumParams(OrboCgi* cgi, int count, int flags, OrboCgiBodyPositions* positions,
                               char* buffer, std::size_t size);

// Does the same, and tells of the file: the names of its field and of the file, ""
// where there is no file, and its size in `state->size`.  The size is exact for a
// small file, in any case for an empty one; otherwise no file of this body can be
// larger.  `*loaded` becomes 1 on success.
int OrboCgiLoadUploadParams(OrboCgi* cgi, OrboCgiUploadProgress progress, OrboCgiUploadState* state,
                            unsigned char* loaded, std::string* field_name, std::string* file_name);

// Stores the file that the last call told of in `directory`, puts it into the table
// of `*cgi`, reads on to the next file and tells of that one in the same way.
int OrboCgiLoadUploadFileToDir(OrboCgi* cgi, const char* directory, OrboCgiUploadProgress progress,
                               OrboCgiUploadState* state, unsigned char* loaded,
                               std::string* field_name, std::string* file_name);

// Reads what is left of the body: the fields into `tables[0]` with the names of
// the files, the paths of the files, stored in `directory`, into `tables[1]`.  After
// a failure `tables[1]` holds the files that had been stored whole.
int OrboCgiLoadUploadAll(QLIBSZHASH* const* tables, const char* directory,
                         OrboCgiUploadProgress progress, int flags);

// Removes from `directory` the files of processes that have ended and could not do so
// themselves.  Safe where others may write too: nothing is removed but what loaders have
// stored for this user.
void OrboCgiSweepUploads(const char* directory);

// Whether `path` is that of a file which a loader stored, and not just what a client
// sent for it.
bool OrboCgiIsStoredFile(const std::string& path);
