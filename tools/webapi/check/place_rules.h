#pragma once

#include "check/DescribedFile.h"

namespace ORBO::tool {

// Judges whether the loader looks for the API of `entry` in this file, which lies in the
// working directory with those that may stand in its place.
void CheckPlaceOf(const DescribedFile& file, const DescriptionFile::Entry& entry,
                  Findings& findings);

}  // namespace ORBO::tool
