// Handlers that show who calls, ask for things beside the result, and call on.

#include <sys/prctl.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APIRunner.h>
#include <webapi/APITable.h>

namespace {

using ORBO::APIRequest;
using ORBO::APIResponse;

void Who(APIRequest* request, APIResponse* response) {
  Json::Value data(Json::objectValue);
  data["user"] = request->GetLoginUserName();
  data["admin"] = request->IsAdmin();
  data["privilege"] = request->HasAppPriv("ORBO.Test");
  data["classes"] = request->GetAllowUser();
  data["method"] = request->GetEnv("REQUEST_METHOD", "").asString() +
                   (request->HasEnv("QUERY_STRING") ? "+query" : "");
  data["left"] = request->GetParam("left", Json::Value());
  response->SetSuccess(data);
}

void Nothing(void*) {}

void Ask(APIRequest*, APIResponse* response) {
  response->SetHttpdRestart(true);
  response->SetServerError("asked");
  response->SetCallbackFunc(Nothing, nullptr);
  response->SetSuccess();
}

// Calls the method "inner" as the user "guest".
void CallOn(APIRequest* request, APIResponse* response) {
  Json::Value body;
  ORBO::APIRunner::Exec(body, "ORBO.Test.Caller", 1,
                        request->GetParam("inner", "").asString().c_str(),
                        Json::Value(Json::objectValue), "guest");
  char name[17] = {};
  prctl(PR_GET_NAME, name);
  body["task_name"] = name;
  response->SetSuccess(body);
}

void Fail(APIRequest*, APIResponse* response) { response->SetError(1001); }

bool IsFresh(APIRequest*, APIResponse* response) { return response->GetError() == 0; }

ORBO::_tag_API_TABLE methods[] = {
    {"ORBO.Test.Caller", 1, "fail", Fail}, {"ORBO.Test.Caller", 1, "fresh", Who},
    {"ORBO.Test.Open", 1, "who", Who},     {"ORBO.Test.Caller", 1, "who", Who},
    {"ORBO.Test.Caller", 1, "ask", Ask},   {"ORBO.Test.Caller", 1, "call", CallOn},
    {nullptr, 0, nullptr, nullptr},
};

ORBO::_tag_API_CHECK_TABLE checks[] = {
    {"ORBO.Test.Caller", 1, "fresh", IsFresh, nullptr, nullptr},
    {nullptr, 0, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_CHECK_TABLE* GetAPICheckTable() { return checks; }
ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
