#pragma once

#include <sys/types.h>

// Files.  A null path is a failure with `errno` EINVAL.

// 1 if `path` exists, 0 if it does not, negative if that cannot be told.
int QLIBCFileExist(const char* path);

// Deletes a file.  0 on success, else -1 with `errno` set.
int QLIBCSysUnlink(const char* path);

// Sets the access and modification times of `path` to now.  The two flags are
// the platform's business.  0 on success, else -1 with `errno` set.
int QLIBCFileUTime(const char* path, int flags, int reserved);

// Makes the directory `path` with the mode `mode`, and with mode 0755 those above
// it, where they are missing, and gives `path` to `owner` and `group` (-1: left as
// it is).  Whoever `mode` lets read or write the directory may search it as well:
// without that nobody but root could use a directory of mode 0600.  One that is
// there keeps its mode.  The two flags are the platform's business.  0 once it is
// a directory, else -1 with `errno` set.
int ORBOFSMkdirP(const char* path, int flags, int reserved, uid_t owner, gid_t group, mode_t mode);

// Sets the times of `path` to now; makes an empty file, mode 0600, where there is
// none.  Follows no link.  0 on success, else -1 with `errno` set.
int QLIBCFileTouch(const char* path);

// 1 if the last line "key=value" of the file for `key` gives it exactly `value`,
// else 0, also where the file cannot be read.  Blanks around key and value and
// double quotes around the value do not count.  `flags` is the platform's
// business.
int QLIBCFileCheckKeyValue(const char* path, const char* key, const char* value, int flags);

// Locks the file `path`, which is made with mode 0600 where it is missing, against
// all other holders, or with `exclusive` 0 against exclusive ones only; waits for
// them up to `seconds`.  Follows no link.  0 and the lock in `*lock`, else -1 with
// `errno` set: EWOULDBLOCK when the time is over.  A lock ends with its process;
// programs that this one starts do not inherit it.  Deleting the file is safe for
// its exclusive holder alone.
int QLIBCFileLockTimeByFile(const char* path, int exclusive, int seconds, int* lock);

// Releases what QLIBCFileLockTimeByFile gave.  0 on success, else -1 with `errno`
// set.
int QLIBCFileUnlockByFile(int lock);
