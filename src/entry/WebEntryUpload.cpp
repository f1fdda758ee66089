#include <webapi/APIUpload.h>
#include <webapi/WebEntry.h>

#include <cstdint>
#include <string>

#include "platform/cgi.h"
#include "platform/string_table.h"
#include "platform/upload.h"
#include "platform/webapi_util.h"
#include "request/APIRequestPrivate.h"
#include "util/error_codes.h"

namespace ORBO {
namespace {

constexpr int kTableSlots = 256;
constexpr int kNameFields = 3;
constexpr std::size_t kNameSize = 256;

}  // namespace

bool WebEntry::LoadUploadAPIDesc(Json::Value& out) {
  if (cgi_->parameters == nullptr) {
    cgi_->parameters = QLIBCSzHashAlloc(kTableSlots);
  }
  QLIBCHashRemoveAll(cgi_->parameters);
  OrboCgiBodyPositions positions;
  char name[kNameSize] = {};
  if (OrboCgiLoadUploadNumParams(cgi_.get(), kNameFields, 0, &positions, name, sizeof name) < 0) {
    return false;
  }
  // What reads on sees the length of what is left.
  Json::Value env(Json::objectValue);
  env["CONTENT_LENGTH"] = std::to_string(positions.end - positions.next);
  request_->private_->InitEnv(std::move(env));
  return WebAPIUtil::SzHashToJsonObj(cgi_->parameters, out);
}

bool WebEntry::HandleUpload(APIRequest* request, APIResponse* response) {
  if (GetMethodAttr(request, "deferUpload")) {
    return true;
  }
  APIUpload upload(request);
  Json::Value fields(Json::objectValue);
  const int result = upload.GetUploadAll(fields, &temp_files_);
  if (result != kUploadLoaded) {
    Json::Value errors(Json::objectValue);
    errors["upload_err"] = result;
    response->SetError(kErrorUpload, errors);
    return false;
  }
  request->private_->AddUploadFields(std::move(fields));
  return true;
}

}  // namespace ORBO
