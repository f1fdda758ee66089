#include "entry/permission_codes.h"

#include "util/error_codes.h"

namespace ORBO {

int PermissionError(int check_result) {
  switch (check_result) {
    case -5:
      return kErrorNotAuthenticated;
    case -1:
      return kErrorSessionTimeout;
    case 1:
    case 2:
      return 0;
    default:
      return kErrorNoPrivilege;  // also for 0, which is no proof of anything
  }
}

const char* PermissionWord(int error) {
  switch (error) {
    case kErrorSessionTimeout:
      return "timeout";
    case kErrorNotAuthenticated:
      return "unauth";
    case kErrorNoPrivilege:
      return "noprivilege";
    default:
      return nullptr;
  }
}

}  // namespace ORBO
