#pragma once

// The platform's last error, by the numbers of the system.
inline constexpr int kPlatformErrorDirectory = 3072;  // a directory cannot be made
inline constexpr int kPlatformErrorNoRoom = 10496;    // not enough free space

void QLIBCErrSet(int error);

// What QLIBCErrSet set last; 0 before that.
int QLIBCErrGet();
