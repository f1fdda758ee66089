#pragma once

namespace ORBO::tool {

// What an error code of the system means, as a few words.
const char* ErrorMeaning(int code);

}  // namespace ORBO::tool
