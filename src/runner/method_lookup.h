#pragma once

#include <string>
#include <string_view>

#include "runner/DescriptionFile.h"

namespace ORBO {

// Whether the method list of `version` in `entry` names `method`: as a bare
// text, or as any member of an object.
bool IsMethodListed(const DescriptionFile::Entry& entry, int version, const std::string& method);

// The attributes that `method` has of its own in the list of `version`, as JSON
// text; empty when it is listed as a bare text or not at all.  An object
// element stands for its first member, in name order, alone.
std::string_view FindMethodAttributes(const DescriptionFile::Entry& entry, int version,
                                      const std::string& method);

}  // namespace ORBO
