#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ORBO {

// The servers that calls may be relayed to, one file each below /etc/orbo/relay.d.
// The file's name is the id in decimal digits; its lines are "key=value".  See
// docs/relay.md.

struct RelayTarget {
  std::string url;
  std::string token;      // an access token of the target
  std::string authority;  // a file with certificates; "" for the system's authorities
  std::string pin;        // the digest of the target's key; "" for any key
  bool is_verified = true;
  std::vector<std::string> users;  // who may use it; none for administrators
  long timeout = 60;               // seconds for a call
  long upload_timeout = 3600;      // seconds for an upload
  std::uint64_t max_answer_size = 16U << 20;
};

// The directory of the files, without a trailing "/".
std::string RelayTargetDirectory();

// The ids that have a file, in their order.
std::vector<std::int64_t> RelayTargetIds();

// Reads the target `id`.  False, and the reason in `problem`, if there is none or its
// file cannot be used: wrong rights, or a value that cannot be.
bool ReadRelayTarget(std::int64_t id, RelayTarget& out, std::string& problem);

// Whether the user may send calls there: one of its users, or a member of one of its
// groups, and without those an administrator.
bool MayUseRelayTarget(const RelayTarget& target, const std::string& user);

}  // namespace ORBO
