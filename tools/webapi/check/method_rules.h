#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "check/DescribedFile.h"

namespace ORBO::tool {

// A method as the list of a version names it.
struct ListedMethod {
  int version;
  std::string name;
  std::string_view text;  // where it stands
};

// The methods of the lists that a call can name, in the order of the text.
std::vector<ListedMethod> ListedMethods(const DescriptionFile::Entry& entry);

// Judges the lists of methods of an entry and their elements.  `info` is the entry with
// the defaults applied.
void CheckMethods(const DescribedFile& file, const DescriptionFile::Entry& entry,
                  const Json::Value& info, Findings& findings);

}  // namespace ORBO::tool
