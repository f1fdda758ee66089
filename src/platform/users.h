#pragma once

// Users and groups.

// Writes the path of the directory for preferences of `user` into `buffer` of
// `size` bytes, and creates the directory where it is missing.  Negative if there
// is no such user, the directory cannot be had or used, or its path does not fit.
int ORBOUserPreferenceDirGet(const char* user, char* buffer, int size);

// The same for a group.
int ORBOGroupPreferenceDirGet(const char* group, char* buffer, int size);

// 1 when `user` belongs to the administrators group or is user 0, 0 when not,
// negative when that cannot be told.
int QLIBGroupIsAdminGroupMem(const char* user, int flags);

// Non-zero when `user` holds the application privilege `privilege` from the
// client address `remote_ip`.
int QLIBAppPrivUserHas(const char* user, const char* privilege, const char* remote_ip);
