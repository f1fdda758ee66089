#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// The value of Content-Disposition for content that is to be saved under `name`, which
// is UTF-8 (RFC 6266).  What may not stand in a file's name is "_" in it.  The quoted
// form holds ASCII alone; where that is not the whole name, "filename*" has it (RFC
// 8187).  Nothing in `name` can end the value or the line.
std::string AttachmentDisposition(std::string_view name);

}  // namespace ORBO
