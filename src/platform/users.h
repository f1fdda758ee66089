#pragma once

// Users and groups.

// Writes the path of the directory for preferences of `user` into `buffer` of
// `size` bytes.  Negative if there is none or it does not fit.
int ORBOUserPreferenceDirGet(const char* user, char* buffer, int size);

// The same for a group.
int ORBOGroupPreferenceDirGet(const char* group, char* buffer, int size);
