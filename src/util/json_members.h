#pragma once

#include <string_view>
#include <vector>

#include "util/json_scan.h"

namespace ORBO::JSON {

// One member of an object in JSON text.  The views live as long as the text.
struct Member {
  std::string_view key;  // as it stands in the text, with its quotes
  std::string_view text;
};

// Splits `text`, one JSON object with nothing but blanks around it, into its
// members, in the text's order.  False, and `members` unspecified, if it is none.
bool SplitMembers(std::string_view text, Comments comments, std::vector<Member>& members);

// The text of the last member `name`; empty if there is none.
std::string_view FindMember(const std::vector<Member>& members, std::string_view name);

}  // namespace ORBO::JSON
