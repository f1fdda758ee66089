#include <json/json.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

static void Get(ORBO::APIRequest* request, ORBO::APIResponse* response) {
  Json::Value data(Json::objectValue);
  data["greeting"] = "Hello, " + request->GetParam("name", "nobody").asString();
  response->SetSuccess(data);
}

ORBO::_tag_API_TABLE* GetAPITable() {
  static ORBO::_tag_API_TABLE table[] = {
      {"ORBO.Outside.Greeting", 1, "get", Get},
      {nullptr, 0, nullptr, nullptr},
  };
  return table;
}
