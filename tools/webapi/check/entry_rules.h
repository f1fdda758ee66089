#pragma once

#include "check/DescribedFile.h"
#include "runner/DescriptionDefaults.h"

namespace ORBO::tool {

// Judges the description entry of one API by itself.
void CheckEntry(const DescribedFile& file, const DescriptionFile::Entry& entry,
                DescriptionDefaults& defaults, Findings& findings);

}  // namespace ORBO::tool
