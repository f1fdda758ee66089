#include "platform/cgi.h"

// No whole-line cipher is configured in this build, so every line is a plain
// one.  Percent-decoding is left to the splitting into pairs: decoded here, an
// encoded "&" or "=" would split a value.
int OrboCgiDetectAndDecryptParamLine(char* line) { return line != nullptr ? 1 : 0; }
