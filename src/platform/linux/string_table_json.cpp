#include <new>

#include "platform/string_table.h"
#include "platform/webapi_util.h"
#include "util/json_types.h"

namespace ORBO::WebAPIUtil {

bool SzHashToJsonObj(const QLIBSZHASH* table, Json::Value& target) {
  if (table == nullptr || !JSON::IsObject(target)) {
    return false;
  }
  try {
    for (const auto& [name, text] : table->pairs) {
      JSON::Set(target, name, Json::Value(text));
    }
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace ORBO::WebAPIUtil
