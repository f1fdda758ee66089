#include "described_apis.h"

#include <webapi/APIRunner.h>

#include <cerrno>

#include "output.h"
#include "util/WorkingDirectoryGuard.h"
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

}  // namespace ORBO::tool
