#include <string_view>
#include <utility>

#include "platform/linux/param_piece.h"
#include "platform/webapi_util.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO::WebAPIUtil {
namespace {

// Far above what any client needs, and cheap to hold.
constexpr std::size_t kMaxPairs = 4096;

// A value of one byte of text takes about 100 bytes of memory, so that a body of
// the largest size could take more than a gigabyte.
constexpr std::size_t kMaxValues = std::size_t{1} << 18;

bool HasTooManyPairs(std::string_view line) {
  std::size_t count = 0;
  std::string_view piece;
  while (count <= kMaxPairs && TakePiece(line, piece)) {
    ++count;
  }
  return count > kMaxPairs;
}

void MergeInto(Json::Value& target, Json::Value& pairs) {
  for (auto pair = pairs.begin(); pair != pairs.end(); ++pair) {
    target[pair.name()].swap(*pair);
  }
}

std::string Decode(std::string_view text, bool decode) {
  std::string decoded(text);
  return decode ? URLDecode(decoded, false) : decoded;
}

// How many values `text` becomes at most: each element and member of a JSON text
// follows a bracket or a comma outside of strings.
std::size_t CountValues(const std::string& text) {
  if (text.empty() || (text.front() != '[' && text.front() != '{')) {
    return 1;
  }
  std::size_t count = 1;
  bool in_string = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (in_string && c == '\\') {
      ++i;
    } else if (c == '"') {
      in_string = !in_string;
    } else if (!in_string && (c == '[' || c == '{' || c == ',')) {
      ++count;
    }
  }
  return count;
}

// Strictly one JSON text: blanks around it would make a number of " 10".
bool IsTyped(const std::string& text) {
  return JSON::SkipValue(text, 0, JSON::Comments::kRefused) == text.size();
}

Json::Value ToValue(const std::string& text, bool typed) {
  Json::Value value;
  if (!typed || !IsTyped(text) || !JSON::Parse(text, value)) {
    value = text;
  }
  return value;
}

}  // namespace

bool strPairToJsonObj(const std::string& line, Json::Value& target, bool decode, bool typed) {
  if (!JSON::IsObject(target) || HasTooManyPairs(line)) {
    return false;
  }
  Json::Value pairs(Json::objectValue);
  std::size_t values = 0;
  std::string_view rest = line;
  std::string_view piece;
  while (TakePiece(rest, piece)) {
    const std::string value = Decode(ValueIn(piece), decode);
    values += typed ? CountValues(value) : 1;
    if (values > kMaxValues) {
      return false;
    }
    JSON::Set(pairs, Decode(NameIn(piece), decode), ToValue(value, typed));
  }
  MergeInto(target, pairs);
  return true;
}

}  // namespace ORBO::WebAPIUtil
