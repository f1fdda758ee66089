#include "check/json_source.h"

#include <json/value.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "util/json_cursor.h"
#include "util/json_text.h"

namespace ORBO::tool {
namespace {

constexpr JSON::Comments kComments = JSON::Comments::kAllowed;

}  // namespace

JsonSource::JsonSource(std::string shown_name, std::string_view whole_text)
    : shown(std::move(shown_name)), text(whole_text), line_begins_{0} {
  for (std::size_t end = 0; (end = text.find('\n', end)) != std::string_view::npos;) {
    line_begins_.push_back(++end);
  }
}

Place JsonSource::At(std::string_view piece) const {
  Place place = AtColumn(static_cast<std::size_t>(piece.data() - text.data()));
  place.column = 0;
  return place;
}

Place JsonSource::AtColumn(std::size_t offset) const {
  const auto next = std::upper_bound(line_begins_.begin(), line_begins_.end(), offset);
  const auto line = static_cast<std::size_t>(next - line_begins_.begin());
  return {shown, line, offset - *std::prev(next) + 1};
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
