#include "polling/APIPollingPrivate.h"

#include <webapi/APIRequest.h>

#include "polling/task_owners.h"
#include "util/json_types.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIPolling";

Json::Value FullId(const std::string& owner, const Json::Value& id) {
  return owner + "/" + JSON::AsString(id);
}

}  // namespace

APIPollingPrivate::APIPollingPrivate(APIRequest* request, APIPolling* owner)
    : owner_(owner), request_(request) {
  root_["polling_attribute"] = Json::Value(Json::objectValue);
}

bool APIPollingPrivate::Fail(int line, const char* message, int error) {
  Log(LOG_ERR, "%s:%d %s", kSource, line, message);
  if (error != 0) {
    error_ = error;
  }
  return false;
}

bool APIPollingPrivate::SetGroupAttr(const std::string& group) {
  if (!group.empty() && group != kAdminGroup && group != kEveryoneGroup) {
    return Fail(539, "bad parameters", APIPolling::ERROR_BAD_PARAMETER);
  }
  if (group == kAdminGroup && (request_ == nullptr || !request_->IsAdmin())) {
    return Fail(545, "No permission", APIPolling::ERROR_NOT_ADMIN);
  }
  return SetData("polling_attribute", "share_to_group", Json::Value(group), true);
}

bool APIPollingPrivate::GetUserAndTaskID(const std::string& full, std::string& user,
                                         std::string& id) {
  const std::size_t slash = full.find('/');
  if (slash == std::string::npos) {
    return false;
  }
  // A NUL would end the names for the task manager, and let one record have many ids.
  if (full.find('\0') != std::string::npos) {
    return false;
  }
  user = full.substr(0, slash);
  id = full.substr(slash + 1);
  return true;
}

std::string APIPollingPrivate::OwnerOfLogin() {
  const std::string login = request_->GetLoginUserName();
  return login.empty() || login.front() == kNoUser ? "" : login;
}

bool APIPollingPrivate::CheckTaskUser(const std::string& owner) {
  if (owner == OwnerOfLogin() || owner == kEveryoneOwner) {
    return true;
  }
  if (owner != kAdminOwner) {
    return Fail(98, "Invalid task id", 0);
  }
  return request_->IsAdmin() || Fail(103, "Permission denied", 0);
}

bool APIPollingPrivate::ReadId(const std::string& full_id, std::string& owner, std::string& id) {
  return GetUserAndTaskID(full_id, owner, id) && CheckTaskUser(owner);
}

Json::Value APIPollingPrivate::ConverToFullTaskId(const std::string& owner,
                                                  const Json::Value& ids) {
  if (owner.empty() || JSON::IsEmpty(ids) || ids == Json::Value("")) {
    return Json::Value();
  }
  if (JSON::IsString(ids)) {
    return FullId(owner, ids);
  }
  if (ids.type() != Json::objectValue && ids.type() != Json::arrayValue) {
    return Json::Value();
  }
  Json::Value full = ids;
  for (Json::Value& id : full) {
    id = FullId(owner, id);
  }
  return full;
}

}  // namespace ORBO
