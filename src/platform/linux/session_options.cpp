#include "platform/cgi.h"

const char* OrboCgiGetOption(const OrboCgi* cgi, int option) {
  if (cgi == nullptr) {
    return nullptr;
  }
  const auto found = cgi->options.find(option);
  return found != cgi->options.end() ? found->second.c_str() : nullptr;
}

std::string OrboCgiGetLang(const OrboCgi* cgi) {
  return cgi == nullptr || cgi->language.empty() ? "enu" : cgi->language;
}
