// A directory of files that all users share: uploads are kept there, downloads resume
// and show progress.  index.html is a page for it.

#include <webapi/APIDownload.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>
#include <webapi/APIUpload.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

#include "ShareDirectory.h"

namespace {

using example::SharedFile;
using example::ShareDirectory;
using ORBO::APIRequest;
using ORBO::APIResponse;

constexpr int kErrorBadParameter = 1001;  // errors: {"parameter": name}
constexpr int kErrorNoFile = 1002;
constexpr int kErrorPostOnly = 1003;
constexpr int kErrorNoRoom = 1004;       // upload: errors: {"files": those stored before}
constexpr int kErrorUnavailable = 1005;  // the same

// Sets the error for the reason that `errno` tells.
void Refuse(APIResponse* response, const Json::Value& errors = Json::Value()) {
  switch (errno) {
    case ENOENT:
      response->SetStatus(ORBO::HTTP_STATUS_NOT_FOUND);
      response->SetError(kErrorNoFile);
      break;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      response->SetError(kErrorNoRoom, errors);
      break;
    default:
      response->SetError(kErrorUnavailable, errors);
  }
}

void RefuseParameter(APIResponse* response, const char* name) {
  Json::Value errors(Json::objectValue);
  errors["parameter"] = name;
  response->SetError(kErrorBadParameter, errors);
}

bool IsOpen(const ShareDirectory& share, APIResponse* response) {
  if (!share.IsOpen()) {
    response->SetError(kErrorUnavailable);
  }
  return share.IsOpen();
}

bool IsNotEmpty(const std::string& text) { return !text.empty(); }

// Reads the parameter "name"; "" with the error set if it is missing.
std::string NameOf(APIRequest* request, APIResponse* response) {
  auto name = request->GetAndCheckString("name", APIRequest::PARAM_REQUIRED, IsNotEmpty);
  if (name.IsInvalid() || name.IsReset()) {
    RefuseParameter(response, "name");
    return "";
  }
  return name.Get();
}

Json::Value ToJson(const SharedFile& file) {
  Json::Value value(Json::objectValue);
  value["name"] = file.name;
  value["size"] = static_cast<Json::UInt64>(file.size);
  value["modified"] = static_cast<Json::Int64>(file.modified);
  return value;
}

// ORBO.Example.Share 1 list: all files.
void List(APIRequest* /*request*/, APIResponse* response) {
  const ShareDirectory share;
  std::vector<SharedFile> files;
  if (!IsOpen(share, response)) {
    return;
  }
  if (!share.List(files)) {
    Refuse(response);
    return;
  }
  Json::Value data(Json::objectValue);
  data["files"] = Json::Value(Json::arrayValue);
  for (const SharedFile& file : files) {
    data["files"].append(ToJson(file));
  }
  response->SetSuccess(data);
}

// ORBO.Example.Share 1 upload: the files of all fields; those before one that fails
// stay.
void Upload(APIRequest* request, APIResponse* response) {
  // Names of files come from clients, and an upload is answered as a page otherwise.
  response->SetHeader("Content-type", "application/json; charset=\"UTF-8\"");
  response->SetHeader("X-Content-Type-Options", "nosniff");
  const ShareDirectory share;
  if (!IsOpen(share, response)) {
    return;
  }
  Json::Value data(Json::objectValue);
  data["files"] = Json::Value(Json::arrayValue);
  const Json::Value params = request->GetParam("", Json::Value(Json::objectValue));
  for (const std::string& field : params.getMemberNames()) {
    // Any client can send a text that looks like the path of a file.
    if (!params[field].isString() || !ORBO::APIUpload::IsStoredFile(params[field].asString())) {
      continue;
    }
    SharedFile taken;
    const std::string client_name = request->GetParam(field + ".name", "").asString();
    if (!share.Take(params[field].asString(), client_name, taken)) {
      Refuse(response, data);
      return;
    }
    data["files"].append(ToJson(taken));
  }
  if (data["files"].empty()) {
    RefuseParameter(response, "file");
    return;
  }
  response->SetSuccess(data);
}

// ORBO.Example.Share 1 download: the file "name".
void Download(APIRequest* request, APIResponse* response) {
  const ShareDirectory share;
  const std::string name = NameOf(request, response);
  if (name.empty() || !IsOpen(share, response)) {
    return;
  }
  const int descriptor = share.OpenFile(name);
  if (descriptor < 0) {
    Refuse(response);
    return;
  }
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(fdopen(descriptor, "rb"), std::fclose);
  ORBO::APIDownload download(response);
  download.SetAttachment(name);
  download.SetMimeTypeFromFileName(name);
  // By send-file the path is looked up once more, which is as good: nobody but this
  // API's methods puts anything into the directory.
  const int result = download.GetXSendFileEnabled() ? download.Output(share.PathOf(name))
                                                    : download.Output(file.get());
  if (result < 0) {
    errno = -result;
    Refuse(response);
  }
}

bool IsPost(APIRequest* request, APIResponse* response) {
  // The calls of a compound request look like POST requests, whatever carried them.
  const char* const method = std::getenv("REQUEST_METHOD");
  if (request->GetRequestMethod() == APIRequest::METHOD_POST &&
      (method == nullptr || std::strcmp(method, "POST") == 0)) {
    return true;
  }
  response->SetStatus(ORBO::HTTP_STATUS_METHOD_NOT_ALLOWED);
  response->SetHeader("Allow", "POST");
  response->SetError(kErrorPostOnly);
  return false;
}

// ORBO.Example.Share 1 remove: the file "name".
void Remove(APIRequest* request, APIResponse* response) {
  if (!IsPost(request, response)) {
    return;
  }
  const ShareDirectory share;
  const std::string name = NameOf(request, response);
  if (name.empty() || !IsOpen(share, response)) {
    return;
  }
  if (share.Remove(name)) {
    response->SetSuccess();
  } else {
    Refuse(response);
  }
}

constexpr char kAPI[] = "ORBO.Example.Share";

ORBO::_tag_API_TABLE methods[] = {
    {kAPI, 1, "list", List},     {kAPI, 1, "upload", Upload},    {kAPI, 1, "download", Download},
    {kAPI, 1, "remove", Remove}, {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
