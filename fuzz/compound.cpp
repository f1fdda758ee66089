// Compound requests: the first line is "stop_when_error", all after it "compound".  Each
// call of the list gets its answer, and the same as if it were the only one.

#include <dlfcn.h>
#include <webapi/APIRunner.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "support/cgi_answer.h"
#include "support/scratch.h"
#include "support/target.h"
#include "support/text.h"
#include "util/WorkingDirectoryGuard.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/paths.h"

namespace ORBO {
namespace {

// A text of fewer bytes cannot hold as many calls as one request may make.
constexpr std::size_t kFewCalls = 2000;

// A description whose handlers are in the test module `name`, which stays open.
void Install(const std::string& name, const std::string& api, const std::string& methods) {
  const std::string library = WEBAPI_TEST_MODULE_DIR "/" + name + ".so";
  Require(dlopen(library.c_str(), RTLD_LAZY) != nullptr);
  WriteScratch(std::string(kWebAPIDirectory) + api + ".lib",
               R"({")" + api + R"(":{"lib":")" + library +
                   R"(","minVersion":1,"maxVersion":2,"methods":{"1":[)" + methods + "]}}}");
}

bool LayOut() {
  // A request holds the environment, which is not to depend on who runs this.  TMPDIR,
  // which places the directory, goes with it.
  Require(!ScratchDirectory().empty() && clearenv() == 0);
  EnterScratchRoot();
  const std::string directory(kWebAPIDirectory);
  WriteScratch(directory + "lib.def", R"({"authLevel":1,"methods":{}})");
  WriteScratch(directory + "ORBO.Entry.lib", R"({"ORBO.Entry.Request":{"lib":"built-in",
      "minVersion":1,"maxVersion":1,"methods":{"1":["request","other"]}}})");
  Install("caller", "ORBO.Test.Caller", R"("who","ask","call","fail","fresh","no",
      {"up":{"allowUpload":true}},{"down":{"allowDownload":true}})");
  Install("good", "ORBO.Test.Good", R"("echo","silent","throw","process","redirect","checked",
      "refused","check_throws")");
  return true;
}

Json::Value Run(const Json::Value& compound, const Json::Value& stop) {
  Json::Value options(Json::objectValue);
  Json::Value& params = options["postParam"];
  params["api"] = "ORBO.Entry.Request";
  params["version"] = 1;
  params["method"] = "request";
  params["compound"] = compound;
  params["stop_when_error"] = stop;
  options["session"]["username"] = "ada";
  APIRunner runner;
  runner.Run(options);
  return runner.GetResponse();
}

// Checks the answer to a list; gives the index of the last call that was made.
Json::ArrayIndex CheckResult(const Json::Value& compound, bool stops, const Json::Value& data) {
  const Json::Value& result = JSON::At(data, "result");
  Require(result.type() == Json::arrayValue && result.size() == compound.size());
  bool has_fail = false;
  Json::ArrayIndex last = 0;
  for (Json::ArrayIndex i = 0; i < result.size(); ++i) {
    const int code = CodeOf(result[i]);
    Require((code == 112) == (has_fail && stops));
    last = code == 112 ? last : i;
    has_fail = has_fail || code != 0;
  }
  Require(JSON::At(data, "has_fail") == Json::Value(has_fail));
  return last;
}

}  // namespace

void TestInput(FuzzInput input) {
  static const bool kReady = LayOut();
  const WorkingDirectoryGuard inside(RootedPath(kWebAPIDirectory));
  Require(kReady && inside.IsEntered());
  // Text that is no JSON is a parameter too.
  const Json::Value stop = ValueOf(input.TakeLine());
  const std::string text(input.TakeRest());
  const Json::Value compound = ValueOf(text);

  std::streambuf* const output = std::cout.rdbuf();
  const Json::Value body = Run(compound, stop);
  Require(std::cout.rdbuf() == output);
  Require(JSON::IsJson(JSON::ToText(body), JSON::Comments::kRefused));
  const bool is_list = JSON::IsArray(compound) && compound.size() <= 1000;
  Require(CodeOf(body) == (is_list ? 0 : 110));
  if (is_list) {
    const Json::Value& data = JSON::At(body, "data");
    const Json::ArrayIndex last = CheckResult(compound, JSON::AsBool(stop), data);
    if (last > 0 && text.size() < kFewCalls) {
      Json::Value one(Json::arrayValue);
      one.append(compound[last]);
      Require(Run(one, stop)["data"]["result"][0] == data["result"][last]);
    }
  }
}

}  // namespace ORBO
