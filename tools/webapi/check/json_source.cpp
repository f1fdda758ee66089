#include "check/json_source.h"

#include <json/value.h>

#include <algorithm>

#include "util/json_cursor.h"
#include "util/json_text.h"

namespace ORBO::tool {
namespace {

constexpr JSON::Comments kComments = JSON::Comments::kAllowed;

}  // namespace

Place JsonSource::At(std::string_view piece) const {
  Place place = AtColumn(static_cast<std::size_t>(piece.data() - text.data()));
  place.column = 0;
  return place;
}

Place JsonSource::AtColumn(std::size_t offset) const {
  const std::string_view before = text.substr(0, offset);
  const std::size_t line_end = before.rfind('\n');
  const std::size_t line_begin = line_end == std::string_view::npos ? 0 : line_end + 1;
  const auto lines = std::count(before.begin(), before.end(), '\n');
  return {shown, static_cast<std::size_t>(lines) + 1, before.size() - line_begin + 1};
}

std::vector<Member> ChildrenOf(std::string_view text) {
  std::vector<Member> children;
  if (text.empty() || (text.front() != '{' && text.front() != '[')) {
    return children;
  }
  JSON::ContainerCursor cursor(text, 0, kComments);
  while (cursor.Next()) {
    const std::size_t end = JSON::SkipValue(text, cursor.value(), kComments);
    if (end == JSON::kMalformed) {
      break;
    }
    children.push_back({cursor.key(), text.substr(cursor.value(), end - cursor.value())});
    cursor.Leave(end);
  }
  return children;
}

std::string Quoted(const std::string& name) { return JSON::ToText(Json::Value(name)); }

}  // namespace ORBO::tool
