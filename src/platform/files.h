#pragma once

// Files.

// 1 if `path` exists, 0 if it does not, negative if that cannot be told.
int QLIBCFileExist(const char* path);

// Deletes a file.  0 on success, else -1 with `errno` set.
int QLIBCSysUnlink(const char* path);
