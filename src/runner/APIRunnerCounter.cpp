#include <webapi/APIRunner.h>

#include "platform/files.h"
#include "request/APIRequestPrivate.h"
#include "runner/usage_counter.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kSystemFile[] = "/etc/orboinfo.conf";
constexpr char kSwitch[] = "join_user_data_collect";
constexpr char kDirectory[] = "/var/spool/webapi";

// Whether the system's owner shares usage data.
bool IsSharing() {
  static const bool kSharing =
      QLIBCFileCheckKeyValue(RootedPath(kSystemFile).c_str(), kSwitch, "yes", 0) == 1;
  return kSharing;
}

}  // namespace

void APIRunner::IncreaseCounter(APIRequest* request) {
  if (request == nullptr || !IsSharing()) {
    return;
  }
  const APIRequestPrivate& call = *request->private_;
  CountCall(RootedPath(kDirectory), call.api(), call.method(), call.version());
}

}  // namespace ORBO
