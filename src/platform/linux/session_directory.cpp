#include "platform/cgi.h"
#include "util/paths.h"

std::string OrboCgiSessionDirectory() { return ORBO::RootedPath("/run/orbo/sessions"); }
