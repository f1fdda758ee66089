// Handlers that act out what the runner must cope with or undo.

#include <sys/resource.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

#include <iostream>
#include <stdexcept>
#include <string>

namespace {

using ORBO::APIRequest;
using ORBO::APIResponse;

void Echo(APIRequest* request, APIResponse* response) {
  response->SetSuccess(request->GetParam("value", Json::Value()));
}

void Silent(APIRequest* /*request*/, APIResponse* /*response*/) {}

void Throw(APIRequest* request, APIResponse* response) {
  if (request->HasParam("result")) {
    response->SetError(1234);
  }
  std::cout << "lost";
  if (request->HasParam("odd")) {
    throw 5;
  }
  throw std::runtime_error("on purpose");
}

// What a handler sees of the process.
void Process(APIRequest* /*request*/, APIResponse* response) {
  Json::Value data(Json::objectValue);
  data["nice"] = getpriority(PRIO_PROCESS, 0);
  std::string line;
  data["input"] = std::getline(std::cin, line) ? line : "";
  std::cout << "from the handler" << std::flush;
  response->SetSuccess(data);
}

void RedirectNowhere(APIRequest* /*request*/, APIResponse* response) { response->Redirect(""); }

// Refuses a request that has the parameter `name`.
bool Refuse(APIRequest* request, APIResponse* response, const char* name, int code) {
  if (request->HasParam(name)) {
    response->SetError(code);
  }
  return !request->HasParam(name);
}

bool RefuseOdd(APIRequest* request, APIResponse* response) {
  return Refuse(request, response, "odd", 1001);
}

bool Fallback(APIRequest* request, APIResponse* response) {
  return Refuse(request, response, "fallback", 1002);
}

bool RefuseSilently(APIRequest* /*request*/, APIResponse* /*response*/) { return false; }

bool ThrowInCheck(APIRequest* /*request*/, APIResponse* /*response*/) {
  throw std::runtime_error("check");
}

ORBO::_tag_API_TABLE methods[] = {
    {"ORBO.Test.Good", 1, "echo", Echo},
    {"ORBO.Test.Good", 1, "echo", Silent},
    {"ORBO.Test.Good", 1, "silent", Silent},
    {"ORBO.Test.Good", 1, "throw", Throw},
    {"ORBO.Test.Good", 1, "process", Process},
    {"ORBO.Test.Good", 1, "open", Process},
    {"ORBO.Test.Good", 1, "redirect", RedirectNowhere},
    {"ORBO.Test.Good", 1, "checked", Echo},
    {"ORBO.Test.Good", 1, "refused", Echo},
    {"ORBO.Test.Good", 1, "check_throws", Echo},
    {nullptr, 0, nullptr, nullptr},
};

ORBO::_tag_API_CHECK_TABLE checks[] = {
    {"ORBO.Test.Good", 1, "checked", RefuseOdd, nullptr, nullptr},
    {"ORBO.Test.Good", 1, "refused", RefuseSilently, nullptr, nullptr},
    {"ORBO.Test.Good", 1, "check_throws", ThrowInCheck, nullptr, nullptr},
    {nullptr, 0, nullptr, Fallback, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
ORBO::_tag_API_CHECK_TABLE* GetAPICheckTable() { return checks; }
