#pragma once

#include <string>

// A data volume.
struct QLIBVOLUME {
  std::string mount_path;  // without a trailing "/"
};

// The directory of a volume that uploads go to for the time of a request, behind the
// mount path.
inline constexpr char kVolumeUploads[] = "/@tmp";

// Finds a data volume on which `size` bytes are free for unprivileged users, of
// several the first of the platform's order.  What killed processes left of uploads is
// removed before the room is counted.  `flags` is the platform's business.  1
// and the volume in `*volume`; otherwise 0, and `*reason` is 1 if there are volumes
// but none with that room, 0 if there are none.
int VolumeAvailGet(unsigned long long size, QLIBVOLUME* volume, int* reason, int flags);
