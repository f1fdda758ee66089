#include <webapi/APIDownload.h>

#include <strings.h>

#include <cstdlib>

#include <webapi/APIResponse.h>

#include "transfer/APIDownloadPrivate.h"

namespace ORBO {
namespace {

constexpr char kSendFileVariable[] = "MOD_X_SENDFILE_ENABLED";

}  // namespace

APIDownload::APIDownload()
    : private_(std::make_unique<APIDownloadPrivate>(this, new APIResponse(nullptr), true)) {}

APIDownload::APIDownload(APIResponse* response)
    : private_(std::make_unique<APIDownloadPrivate>(this, response, false)) {}

APIDownload::~APIDownload() = default;

bool APIDownload::SetHeader(const std::string& name, const std::string& value) {
  return private_->SetHeader(name, value);
}

bool APIDownload::SetHeader(const Json::Value& headers) { return private_->SetHeader(headers); }

bool APIDownload::SetAttachment(const std::string& name) { return private_->SetAttachment(name); }

void APIDownload::SetMimeType(const std::string& type) { private_->SetMimeType(type); }

void APIDownload::SetMimeTypeFromFileName(const std::string& name) {
  private_->SetMimeTypeFromFileName(name);
}

int APIDownload::Output(const std::string& path) { return private_->Output(path); }

int APIDownload::Output(std::FILE* file) { return private_->Output(file); }

void APIDownload::SetXSendFileDisabled() {
  if (std::getenv(kSendFileVariable) != nullptr) {
    unsetenv(kSendFileVariable);
  }
}

bool APIDownload::GetXSendFileEnabled() {
  const char* const enabled = std::getenv(kSendFileVariable);
  return enabled != nullptr && strcasecmp(enabled, "yes") == 0;
}

}  // namespace ORBO
