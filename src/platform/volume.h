#pragma once

#include <string>

// A data volume.
struct QLIBVOLUME {
  std::string mount_path;  // without a trailing "/"
};

// Finds a data volume on which `size` bytes are free for unprivileged users, of
// several the first of the platform's order.  `flags` is the platform's business.  1
// and the volume in `*volume`; otherwise 0, and `*reason` is 1 if there are volumes
// but none with that room, 0 if there are none.
int VolumeAvailGet(unsigned long long size, QLIBVOLUME* volume, int* reason, int flags);
