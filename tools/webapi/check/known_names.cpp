#include "check/known_names.h"

#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "request/user_class.h"

namespace ORBO::tool {
namespace {

constexpr std::size_t kFarthestSlip = 2;

// How many characters must be put in, left out or replaced to make `to` of `from`.
std::size_t EditDistance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

const std::vector<std::string>& EntryKeys() {
  static const std::vector<std::string> kNames = {
      "lib",       "minVersion",    "maxVersion", "methods", "priority",   "authLevel",
      "allowUser", "requestFormat", "count",      "appPriv", "skipTimeout"};
  return kNames;
}

const std::vector<std::string>& DefaultsKeys() {
  static const std::vector<std::string> kNames = {"priority", "authLevel", "allowUser", "methods"};
  return kNames;
}

const std::vector<std::string>& MethodAttributes() {
  static const std::vector<std::string> kNames = {"allowUpload", "deferUpload",  "allowDownload",
                                                  "allowDemo",   "allowTimeout", "allowUser"};
  return kNames;
}

const std::vector<std::string>& UserClasses() {
  static const std::vector<std::string> kNames = [] {
    std::vector<std::string> classes;
    for (const UserClassBit& row : kUserClassBits) {
      classes.emplace_back(row.name);
    }
    return classes;
  }();
  return kNames;
}

bool IsOneOf(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::string Suggestion(const std::vector<std::string>& names, const std::string& name) {
  std::size_t nearest = kFarthestSlip + 1;
  std::string suggestion;
  for (const std::string& known : names) {
    const std::size_t distance =
        strcasecmp(known.c_str(), name.c_str()) == 0 ? 0 : EditDistance(name, known);
    if (distance < nearest) {
      nearest = distance;
      suggestion = "; did you mean \"" + known + "\"?";
    }
  }
  return suggestion;
}

}  // namespace ORBO::tool
