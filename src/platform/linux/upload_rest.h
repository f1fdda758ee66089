#pragma once

#include <cstdint>
#include <string>

#include "platform/linux/upload_body.h"
#include "platform/string_table.h"

namespace ORBO {

// Takes what is left of the upload that this process serves, as it came, to hand it
// on.  Fields in front of the next file that were not read yet are read into `fields`.
// What is left begins with the boundary in front of that file, or the final one, and
// has `size` bytes: those of `text`, then those of `*rest`.  The result is a code of
// platform/upload.h; afterwards no loader can read the body.
int BeginUploadRest(QLIBSZHASH& fields, std::string& text, UploadBody** rest, std::uint64_t& size);

// Forgets the upload, whose request has been served: what is read next is the body of
// another one.
void EndUpload();

}  // namespace ORBO
