#pragma once

#include <string>
#include <vector>

namespace ORBO::tool {

// The members that the system reads of an entry, of "lib.def" and of a method's
// attributes.
const std::vector<std::string>& EntryKeys();
const std::vector<std::string>& DefaultsKeys();
const std::vector<std::string>& MethodAttributes();

// The classes that "allowUser" may name.
const std::vector<std::string>& UserClasses();

bool IsOneOf(const std::vector<std::string>& names, const std::string& name);

// `; did you mean "NAME"?` with the one of `names` that `name` is a slip of; "" if
// there is none.
std::string Suggestion(const std::vector<std::string>& names, const std::string& name);

}  // namespace ORBO::tool
