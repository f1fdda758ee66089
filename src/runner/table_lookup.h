#pragma once

#include <string>

#include <webapi/APITable.h>

namespace ORBO {

// One call, as it was read before the permission steps.
struct CallName {
  std::string api;
  int version;
  std::string method;
};

// The first row of `table` for `call`; null if there is none, or it names no
// handler.
const _tag_API_TABLE* FindHandler(const _tag_API_TABLE* table, const CallName& call);

// The first row of `table` for `call`, or the terminating row, whose check is
// the fallback; null if `table` is null.
const _tag_API_CHECK_TABLE* FindCheck(const _tag_API_CHECK_TABLE* table, const CallName& call);

}  // namespace ORBO
