#pragma once

#include <cstdint>

namespace ORBO {

class APIRequest;
class APIResponse;

// One row of a handler library's method table.  The first row whose API,
// version and method all equal the request's is called; a row with a null API
// name ends the table.
//
// The order and size of the fields are part of the contract between the runner
// and separately built handler libraries.
struct _tag_API_TABLE {
  const char* api;       // API name, compared exactly
  std::int32_t version;  // API version
  const char* method;    // method name, compared exactly
  void (*handler)(APIRequest* request, APIResponse* response);
};

// One row of a handler library's check table.  The row that matches the request
// is asked before the handler runs; a check that returns false ends the call
// and has set the error on the response.
//
// A row with a null API name ends the table.  Its `check`, unlike its other
// fields, is read: it is the fallback for every request that matched no row.
// Leave it null to have no fallback.
struct _tag_API_CHECK_TABLE {
  const char* api;
  std::int32_t version;
  const char* method;
  bool (*check)(APIRequest* request, APIResponse* response);  // may be null
  void* reserved1;  // the library's own; the runner never reads these two
  void* reserved2;
};

static_assert(sizeof(_tag_API_TABLE) == 4 * sizeof(void*),
              "handler libraries are built against this row size");
static_assert(sizeof(_tag_API_CHECK_TABLE) == 6 * sizeof(void*),
              "handler libraries are built against this row size");

}  // namespace ORBO

// What a handler library exports, with C linkage.  The tables are static arrays
// of the library; the runner neither copies nor frees them.  "GetAPITable" is
// required, "GetAPICheckTable" is not.  The library may return null from either.
extern "C" {
__attribute__((visibility("default"))) ORBO::_tag_API_TABLE* GetAPITable();
__attribute__((visibility("default"))) ORBO::_tag_API_CHECK_TABLE* GetAPICheckTable();
}
