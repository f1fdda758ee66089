#include "described_apis.h"

#include <webapi/APIRunner.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>

#include "output.h"
#include "util/WorkingDirectoryGuard.h"
#include "util/json_types.h"
#include "util/paths.h"

namespace ORBO::tool {
namespace {

template <typename Load>
bool InWebAPIDirectory(Json::Value& apis, Load load) {
  const std::string path = RootedPath(kWebAPIDirectory);
  const WorkingDirectoryGuard directory(path);
  if (!directory.IsEntered()) {
    ComplainOfFailure("enter " + path, errno);
    return false;
  }
  apis = Json::Value(Json::objectValue);
  APIRunner runner;
  load(runner);
  return true;
}

}  // namespace

bool LoadDescribedAPIs(Json::Value& apis) {
  return InWebAPIDirectory(apis, [&apis](APIRunner& runner) { runner.InitLibDesc(apis); });
}

bool LoadDescribedAPI(const std::string& api, Json::Value& apis) {
  return InWebAPIDirectory(apis,
                           [&apis, &api](APIRunner& runner) { runner.InitLibDesc(apis, api); });
}

int HighestVersion(const std::string& api, const Json::Value& apis) {
  constexpr std::int64_t kHighest = std::numeric_limits<int>::max();
  const Json::Value* const entry = JSON::Find(apis, api);
  return entry == nullptr ? 1
                          : static_cast<int>(std::clamp<std::int64_t>(
                                JSON::AsInt64(JSON::At(*entry, "maxVersion")), 1, kHighest));
}

}  // namespace ORBO::tool
