#include "error_meaning.h"

#include "util/error_codes.h"

namespace ORBO::tool {

const char* ErrorMeaning(int code) {
  switch (code) {
    case kErrorBadRequest:
      return "the request cannot be used";
    case kErrorNoSuchAPI:
      return "the API is not described";
    case kErrorNoSuchMethod:
      return "the method is not listed for this version";
    case kErrorNoSuchVersion:
      return "the version is out of range";
    case kErrorNoPrivilege:
      return "no privilege";
    case kErrorLibrary:
      return "the handler library is not available";
    case kErrorUploadNotAllowed:
      return "uploads are not allowed";
    case kErrorDemoMode:
      return "not in demo mode";
    case kErrorNotAuthenticated:
      return "not authenticated";
    case kErrorNoHandler:
      return "the method is missing from the handler's table";
    default:
      return "an error of the handler's own";
  }
}

}  // namespace ORBO::tool
