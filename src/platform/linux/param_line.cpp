#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/webapi_util.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO::WebAPIUtil {
namespace {

// Far above what any client needs, and cheap to hold.
constexpr std::size_t kMaxPairs = 4096;

// Takes the next piece that is not empty off the line.  False at its end.
bool TakePiece(std::string_view& line, std::string_view& piece) {
  line.remove_prefix(std::min(line.find_first_not_of('&'), line.size()));
  piece = line.substr(0, line.find('&'));
  line.remove_prefix(piece.size());
  return !piece.empty();
}

bool HasTooManyPairs(std::string_view line) {
  std::size_t count = 0;
  std::string_view piece;
  while (count <= kMaxPairs && TakePiece(line, piece)) {
    ++count;
  }
  return count > kMaxPairs;
}

std::string Decode(std::string_view text, bool decode) {
  std::string decoded(text);
  return decode ? URLDecode(decoded, false) : decoded;
}

Json::Value ToValue(const std::string& text, bool typed) {
  Json::Value value;
  if (!typed || !JSON::Parse(text, value)) {
    value = text;
  }
  return value;
}

}  // namespace

bool strPairToJsonObj(const std::string& line, Json::Value& target, bool decode, bool typed) {
  if (!JSON::IsObject(target) || HasTooManyPairs(line)) {
    return false;
  }
  std::string_view rest = line;
  std::string_view piece;
  while (TakePiece(rest, piece)) {
    const std::size_t equals = std::min(piece.find('='), piece.size());
    const std::string_view value = piece.substr(std::min(equals + 1, piece.size()));
    JSON::Set(target, Decode(piece.substr(0, equals), decode),
              ToValue(Decode(value, decode), typed));
  }
  return true;
}

}  // namespace ORBO::WebAPIUtil
