#include <string_view>

#include "platform/webapi_util.h"
#include "util/trim.h"

namespace ORBO::WebAPIUtil {

Json::Value ParseToArray(const std::string& text, const std::string& separator) {
  Json::Value pieces(Json::arrayValue);
  std::string_view rest = text;
  for (;;) {
    const std::size_t end = separator.empty() ? rest.npos : rest.find(separator.front());
    const std::string piece(Trim(rest.substr(0, end)));
    pieces.append(Json::Value(piece));
    if (end == std::string_view::npos) {
      return pieces;
    }
    rest.remove_prefix(end + 1);
  }
}

}  // namespace ORBO::WebAPIUtil
