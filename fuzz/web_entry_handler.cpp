// A handler that puts into its answer what the parameters say.

#include <webapi/APIDownload.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>
#include <webapi/APIUpload.h>

#include <iostream>
#include <stdexcept>
#include <string>

namespace {

using ORBO::APIRequest;
using ORBO::APIResponse;

std::string Text(APIRequest* request, const char* name) {
  const auto text = request->GetAndCheckString(name, APIRequest::PARAM_OPTIONAL);
  return text.IsSet() ? text.Get() : "";
}

int Number(APIRequest* request, const char* name) {
  const auto number = request->GetAndCheckInt(name, APIRequest::PARAM_OPTIONAL);
  return number.IsSet() ? number.Get() : 0;
}

void SetHeaders(APIRequest* request, APIResponse* response) {
  response->SetHeader("x-" + Text(request, "header"), Text(request, "value"));
  response->AddCookie(Text(request, "path"), Text(request, "cookie"), Text(request, "value"));
  response->SetHttpdRestart(request->HasParam("restart"));
  if (request->HasParam("server_error")) {
    response->SetServerError(Text(request, "server_error"));
  }
  if (request->HasParam("redirect")) {
    response->Redirect(Text(request, "redirect"));
  }
}

void Act(APIRequest* request, APIResponse* response) {
  SetHeaders(request, response);
  std::string line;
  std::getline(std::cin, line);
  std::cout << Text(request, "print") << line << std::flush;
  if (request->HasParam("throw")) {
    throw std::runtime_error(Text(request, "throw"));
  }
  if (request->HasParam("error")) {
    response->SetError(Number(request, "error"), request->GetParam("data", Json::Value()));
  } else if (!request->HasParam("silent")) {
    response->SetSuccess(request->GetParam("", Json::Value()));
  }
}

// Reads the body itself where the description leaves that to the handler.
void Load(APIRequest* request, APIResponse* response) {
  SetHeaders(request, response);
  ORBO::APIUpload upload(request);
  Json::Value params(Json::objectValue);
  Json::Value data(Json::objectValue);
  for (int i = 0; i < Number(request, "fields") % 8; ++i) {
    data["fields"].append(upload.GetUploadParam(params));
    data["file"].append(upload.GetUploadFile(params));
  }
  data["all"] = upload.GetUploadAll(params, nullptr);
  data["count"] = params.size();
  response->SetSuccess(data);
}

void Send(APIRequest* request, APIResponse* response) {
  SetHeaders(request, response);
  ORBO::APIDownload download(response);
  download.SetAttachment(Text(request, "name"));
  download.SetMimeTypeFromFileName(Text(request, "name"));
  const bool is_listed = request->HasParam("listed");
  const int result = download.Output(is_listed ? "lib.def" : Text(request, "file"));
  response->SetError(result == 0 ? 0 : 1001, result);
}

bool Check(APIRequest* request, APIResponse* response) {
  if (Number(request, "check") != 0) {
    response->SetError(Number(request, "check"));
  }
  return !request->HasParam("check");
}

ORBO::_tag_API_TABLE methods[] = {
    {"ORBO.Fuzz", 1, "act", Act},         {"ORBO.Fuzz", 2, "act", Act},
    {"ORBO.Fuzz", 1, "upload", Act},      {"ORBO.Fuzz", 1, "load", Load},
    {"ORBO.Fuzz", 1, "send", Send},       {"ORBO.Fuzz.Member", 1, "act", Act},
    {"ORBO.Fuzz.Visitor", 1, "act", Act}, {nullptr, 0, nullptr, nullptr},
};

ORBO::_tag_API_CHECK_TABLE checks[] = {
    {"ORBO.Fuzz", 2, "act", Check, nullptr, nullptr},
    {nullptr, 0, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
ORBO::_tag_API_CHECK_TABLE* GetAPICheckTable() { return checks; }
