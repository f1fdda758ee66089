#pragma once

// Files.

// 1 if `path` exists, 0 if it does not, negative if that cannot be told.
int QLIBCFileExist(const char* path);

// Deletes a file.  0 on success, else -1 with `errno` set.
int QLIBCSysUnlink(const char* path);

// Sets the access and modification times of `path` to now.  The two flags are
// the platform's business.  0 on success, else -1 with `errno` set.
int QLIBCFileUTime(const char* path, int flags, int reserved);
