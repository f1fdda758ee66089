// The handler of the measured calls: one parameter, one small answer.

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

namespace {

void Echo(ORBO::APIRequest* request, ORBO::APIResponse* response) {
  const auto text = request->GetAndCheckString("text", ORBO::APIRequest::PARAM_OPTIONAL);
  Json::Value data(Json::objectValue);
  data["text"] = text.Get();
  response->SetSuccess(data);
}

ORBO::_tag_API_TABLE table[] = {
    {"ORBO.Small.Last", 1, "echo", Echo},
    {"ORBO.Large.Last", 1, "echo", Echo},
    {"ORBO.Login.Last", 1, "echo", Echo},
    {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return table; }
