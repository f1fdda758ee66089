#include "util/json_members.h"

#include "util/json_cursor.h"

namespace ORBO::JSON {

bool SplitMembers(std::string_view text, Comments comments, std::vector<Member>& members) {
  return ForEachMember(
      text,
      [&members](std::string_view key, std::string_view value) {
        members.push_back({key, value});
        return true;
      },
      comments);
}

std::string_view FindMember(const std::vector<Member>& members, std::string_view name) {
  for (auto member = members.rbegin(); member != members.rend(); ++member) {
    if (QuotedEquals(member->key, name)) {
      return member->text;
    }
  }
  return {};
}

}  // namespace ORBO::JSON
