#include "util/paths.h"

#include <cstdlib>

namespace ORBO {

std::string RootedPath(std::string_view path) {
  std::string rooted;
  if (const char* root = secure_getenv("WEBAPI_ROOT")) {
    rooted = root;
    while (!rooted.empty() && rooted.back() == '/') {
      rooted.pop_back();
    }
  }
  rooted.append(path);
  return rooted;
}

}  // namespace ORBO
