#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "check/Findings.h"
#include "util/json_members.h"

namespace ORBO::tool {

// A JSON file whose text is kept by somebody else.
class JsonSource {
 public:
  JsonSource(std::string shown_name, std::string_view whole_text);

  // Where `piece`, a part of the text, begins.
  Place At(std::string_view piece) const;
  // The same with the column.
  Place AtColumn(std::size_t offset) const;

  const std::string shown;      // the file's name in findings
  const std::string_view text;  // all of it

 private:
  std::vector<std::size_t> line_begins_;  // findings may be as many as lines
};

using JSON::Member;

// The members of the object, or the elements of the array, that begins `text`, which is
// well-formed JSON; elements have no key.  None for any other value.
std::vector<Member> ChildrenOf(std::string_view text);

// `name` as JSON writes it, for findings.
std::string Quoted(const std::string& name);

}  // namespace ORBO::tool
