#include <webapi/APIUpload.h>

#include "platform/upload.h"
#include "transfer/APIUploadPrivate.h"

namespace ORBO {

APIUpload::APIUpload(APIRequest* request)
    : private_(std::make_unique<APIUploadPrivate>(this, request)) {}

APIUpload::~APIUpload() = default;

void APIUpload::SetUploadCallback(void (*callback)(unsigned long long, unsigned long long)) {
  private_->SetUploadCallback(callback);
}

int APIUpload::GetUploadParam(Json::Value& params) { return private_->GetUploadParam(params); }

int APIUpload::GetUploadFile(Json::Value& params) { return private_->GetUploadFile(params); }

int APIUpload::GetUploadAll(Json::Value& params, Json::Value* files) {
  return private_->GetUploadAll(params, files);
}

bool APIUpload::IsStoredFile(const std::string& path) { return OrboCgiIsStoredFile(path); }

}  // namespace ORBO
