#pragma once

namespace ORBO {

// The web-API error codes that the system itself sets on a response.
enum ErrorCode : int {
  kErrorBadRequest = 101,     // options, environment, parameters, or API, version, method
  kErrorNoSuchAPI = 102,      // not described
  kErrorNoSuchMethod = 103,   // not listed for the version
  kErrorNoSuchVersion = 104,  // out of range
  kErrorNoPrivilege = 105,
  kErrorSessionTimeout = 106,
  kErrorUpload = 108,         // upload could not be read
  kErrorRelay = 109,          // relay failed or is not possible here
  kErrorCompound = 110,       // compound request without a list of calls, or too deep
  kErrorLibrary = 111,        // handler library or its table not available
  kErrorSkipped = 112,        // compound call skipped after an error
  kErrorNotInCompound = 113,  // compound call to an upload or download method
  kErrorTaskGroup = 114,      // a task cannot be shared with such a group
  kErrorUploadNotAllowed = 115,
  kErrorDemoMode = 116,
  kErrorNoResult = 117,     // the handler set no result
  kErrorProcessName = 118,  // the kernel refused the process's name
  kErrorNotAuthenticated = 119,
  kErrorNoHandler = 121,  // method missing from the handler's table
};

}  // namespace ORBO
