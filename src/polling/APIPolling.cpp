#include <webapi/APIPolling.h>

#include "polling/APIPollingPrivate.h"

namespace ORBO {
namespace {

constexpr char kAttributes[] = "polling_attribute";

}  // namespace

APIPolling::APIPolling() : APIPolling(nullptr) {}

APIPolling::APIPolling(APIRequest* request)
    : private_(std::make_unique<APIPollingPrivate>(request, this)) {}

APIPolling::~APIPolling() = default;

void APIPolling::SetRequest(APIRequest* request) { private_->SetRequest(request); }

bool APIPolling::SetPrefixAttr(const std::string& prefix) {
  return private_->SetData(kAttributes, "task_id_prefix", Json::Value(prefix), true);
}

bool APIPolling::SetGroupAttr(const std::string& group) { return private_->SetGroupAttr(group); }

bool APIPolling::SetRemoveAttr(bool auto_remove) {
  return private_->SetData(kAttributes, "auto_remove", Json::Value(auto_remove), false);
}

bool APIPolling::SetRemoveParam(bool auto_remove_params) {
  return private_->SetData(kAttributes, "auto_remove_params", Json::Value(auto_remove_params),
                           false);
}

bool APIPolling::Start(APIResponse* response, void (*function)(APIRequest*, APIResponse*, void*),
                       void* argument) {
  return private_->Start(response, function, argument);
}

bool APIPolling::WriteLog(const std::string& text) { return private_->WriteLog(text); }

bool APIPolling::ReadLog(const std::string& full_id, std::uint64_t offset, Json::Value& out) {
  return private_->ReadLog(full_id, offset, out);
}

bool APIPolling::Status(const std::string& full_id, Json::Value& out) {
  return private_->Status(full_id, out);
}

bool APIPolling::Status(const char* full_id, Json::Value& out) {
  return private_->Status(std::string(full_id == nullptr ? "" : full_id), out);
}

bool APIPolling::Status(const Json::Value& full_ids, Json::Value& out) {
  return private_->Status(full_ids, out);
}

bool APIPolling::Stop(const std::string& full_id, bool remove) {
  return private_->Stop(full_id, remove);
}

bool APIPolling::List(const std::string& prefix, const Json::Value& groups, Json::Value& out) {
  return private_->List(prefix, groups, out);
}

void APIPolling::SetError(int error) { private_->SetError(error); }

int APIPolling::GetError() { return private_->GetError(); }

}  // namespace ORBO
