#include "explain/call_trace.h"

#include <json/value.h>

#include <utility>

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/WebEntry.h>

#include "check/known_names.h"
#include "check/path_rules.h"
#include "entry/auth_level.h"
#include "entry/permission_codes.h"
#include "entry/user_rights.h"
#include "explain/described_call.h"
#include "library_tables.h"
#include "platform/users.h"
#include "request/user_class.h"
#include "runner/DescriptionCache.h"
#include "runner/DescriptionDefaults.h"
#include "runner/entry_api.h"
#include "runner/table_lookup.h"
#include "service_rights.h"
#include "util/error_codes.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/paths.h"

namespace ORBO::tool {
namespace {

constexpr int kSeconds = 10;
constexpr int kNoCredentials = -5;

// The request as the CGI program would have it after a good session check.
Json::Value RequestOptions(const AskedCall& call) {
  Json::Value options(Json::objectValue);
  options["getParam"]["api"] = call.api;
  options["getParam"]["version"] = call.version;
  options["getParam"]["method"] = call.method;
  options["environ"]["orbo_remoteIP"] = call.address;
  options["environ"]["CONTENT_TYPE"] = call.is_upload ? "multipart/form-data" : "";
  options["session"]["username"] = call.user;
  options["session"]["isAdmin"] = QLIBGroupIsAdminGroupMem(call.user.c_str(), 0) == 1;
  options["session"]["isTimeout"] = false;
  options["session"]["isAuthorized"] = true;
  return options;
}

class Tracer {
 public:
  explicit Tracer(const AskedCall& call)
      : call_(call), description_(call.api), request_(RequestOptions(call)), response_(&request_) {
    defaults_.Read(RootedPath(kWebAPIDirectory) + kDefaultsFile);
  }

  Trace Run() {
    if (TraceDescription() && !TraceBuiltIn() && TracePermission()) {
      TraceLibrary();
    }
    return trace_;
  }

 private:
  bool Pass(const char* name, const std::string& reason) {
    trace_.steps.push_back({name, StepResult::kPasses, 0, reason});
    return true;
  }
  void Depend(const char* name, const std::string& reason) {
    trace_.steps.push_back({name, StepResult::kDepends, 0, reason});
  }
  bool Refuse(const char* name, int code, const std::string& reason) {
    trace_.steps.push_back({name, StepResult::kRefuses, code, reason});
    trace_.code = code;
    return false;
  }

  bool TraceDescription();
  std::string VersionText();
  std::string PassReason(int code);
  std::string RefusalReason(int code);
  bool TraceBuiltIn();
  bool TracePermission();
  bool TraceCaller();
  bool TraceUserClass();
  bool TracePrivilege();
  void TraceLibrary();
  void TraceHandler(const LibraryTables& tables);
  // Where the value of a member that has a default comes from.
  std::string OriginOf(const char* key);

  const AskedCall& call_;
  const DescribedCall description_;
  DescriptionDefaults defaults_;
  DescriptionCache descriptions_{defaults_};
  WebEntry entry_;
  APIRequest request_;
  APIResponse response_;
  Trace trace_;
  int ignored_code_ = 0;  // of a refusal that does not count
};

std::string Tracer::OriginOf(const char* key) {
  if (description_.HasOwn(key)) {
    return description_.PlaceOf(key);
  }
  return JSON::IsNull(request_.GetAPIInfo(key, Json::Value()))
             ? "neither the description nor lib.def has one"
             : "the default of lib.def";
}

// The first steps are one operation, whose code tells how far it got.
bool Tracer::TraceDescription() {
  static constexpr struct {
    const char* name;
    int code;
  } kSteps[] = {{"request", kErrorBadRequest},      {"description", kErrorNoSuchAPI},
                {"version", kErrorNoSuchVersion},   {"method", kErrorNoSuchMethod},
                {"upload", kErrorUploadNotAllowed}, {"demo mode", kErrorDemoMode}};
  entry_.CheckRequestParam(&request_, &response_);
  entry_.AddAPIInfo(&request_);
  for (const auto& step : kSteps) {
    if (step.code == response_.GetError()) {
      return Refuse(step.name, step.code, RefusalReason(step.code));
    }
    const std::string reason = PassReason(step.code);
    if (!reason.empty()) {
      Pass(step.name, reason);
    }
  }
  return true;
}

std::string Tracer::VersionText() {
  return "the range is " + JSON::AsString(request_.GetAPIInfo("minVersion", 0)) + " to " +
         JSON::AsString(request_.GetAPIInfo("maxVersion", 0)) + ": " +
         description_.PlaceOf("maxVersion");
}

// Why the step that may give `code` passes; "" for one that is of no interest here.
std::string Tracer::PassReason(int code) {
  switch (code) {
    case kErrorBadRequest:
      return call_.api + ", version " + std::to_string(call_.version) + ", method " + call_.method;
    case kErrorNoSuchAPI:
      return description_.PlaceOf();
    case kErrorNoSuchVersion:
      return VersionText();
    case kErrorNoSuchMethod:
      return description_.PlaceOf(call_.version, call_.method);
    case kErrorUploadNotAllowed:
      return call_.is_upload ? "the method has allowUpload" : "";
    default:
      return "";
  }
}

std::string Tracer::RefusalReason(int code) {
  switch (code) {
    case kErrorBadRequest:
      return "the name of the API or of the method is empty";
    case kErrorNoSuchAPI:
      return description_.fault();
    case kErrorNoSuchVersion:
      return VersionText();
    case kErrorNoSuchMethod:
      return "not in a list of version " + std::to_string(call_.version) + " at " +
             description_.PlaceOf("methods") +
             Suggestion(description_.MethodsOf(call_.version), call_.method);
    case kErrorUploadNotAllowed:
      return "the method lacks allowUpload";
    default:
      return "the method lacks allowDemo";
  }
}

// Whether the system serves the call itself.
bool Tracer::TraceBuiltIn() {
  if (call_.api != kEntryAPI) {
    return false;
  }
  return Pass("handler", call_.method == kEntryMethod
                             ? "the system serves it itself; each call in its list is judged alone"
                             : "the system answers it with an empty success");
}

bool Tracer::TracePermission() {
  const std::string origin = OriginOf("authLevel");
  if (!entry_.NeedPermission(&request_)) {
    return Pass("authLevel", "0, no check is made: " + origin);
  }
  const bool is_optional = entry_.SkipPermission(&request_);
  Pass("authLevel",
       (is_optional ? "2, a check is made and its refusal ignored: " : "a check is made: ") +
           origin);
  if (TraceCaller() && TraceUserClass() && TracePrivilege()) {
    return true;
  }
  if (is_optional) {
    trace_.steps.back().result = StepResult::kIgnored;
    ignored_code_ = std::exchange(trace_.code, 0);
  }
  return is_optional;
}

bool Tracer::TraceCaller() {
  if (call_.user.empty()) {
    return Refuse("session", PermissionError(kNoCredentials), "neither a session nor a token");
  }
  return Pass("session", "a valid session of " + call_.user +
                             ", or a token for this method, is taken for granted");
}

bool Tracer::TraceUserClass() {
  const Json::Value classes =
      AllowedUsers(&request_, call_.api, call_.version, call_.method, descriptions_);
  Json::Value own;
  const bool has_own =
      descriptions_.FindMethodAttribute(call_.api, call_.version, call_.method, "allowUser", own);
  const std::string reason =
      UserClass(call_.user, request_.IsAdmin()) + ", allowUser is " + JSON::ToText(classes) + ": " +
      (has_own ? description_.PlaceOf(call_.version, call_.method) : OriginOf("allowUser"));
  return IsUserAllowed(&request_, call_.user.c_str(), classes)
             ? Pass("user class", reason)
             : Refuse("user class", kErrorNoPrivilege, reason);
}

bool Tracer::TracePrivilege() {
  const Json::Value privilege = request_.GetAPIInfo("appPriv", Json::Value(""));
  const bool is_held = HasRequiredPrivilege(&request_, call_.user.c_str());
  const std::string reason =
      JSON::ToText(privilege) +
      (call_.address.empty() ? ", from an unknown address: " : ", from " + call_.address + ": ") +
      description_.PlaceOf("appPriv");
  if (!is_held) {
    return Refuse("privilege", kErrorNoPrivilege, reason);
  }
  return !description_.HasOwn("appPriv") || Pass("privilege", reason);
}

void Tracer::TraceLibrary() {
  const std::string library = JSON::AsString(request_.GetAPIInfo("lib", Json::Value("")));
  Findings findings;
  if (OpensAsRoot() && library.find('/') != std::string::npos &&
      !PathCheck(findings).Check(library)) {
    Depend("library", library +
                          " is not opened: others may change it, and it would run with "
                          "root's rights");
    return;
  }
  const LibraryTables tables = ReadLibraryTables(library, kSeconds);
  if (!tables.fault.empty()) {
    Refuse("library", kErrorLibrary, tables.fault);
    return;
  }
  Pass("library", library);
  TraceHandler(tables);
}

void Tracer::TraceHandler(const LibraryTables& tables) {
  const CallName name{call_.api, call_.version, call_.method};
  const std::vector<_tag_API_CHECK_TABLE> checks = ToCheckTable(tables);
  if (const _tag_API_CHECK_TABLE* row = FindCheck(checks.data(), name); row->check != nullptr) {
    const bool is_own = row->api != nullptr;
    Depend("check",
           std::string(is_own ? "the method's own" : "the library's common") +
               " check function judges the request" +
               (ignored_code_ != 0 ? ", and sees error " + std::to_string(ignored_code_) : ""));
  }
  if (FindHandler(ToMethodTable(tables).data(), name) == nullptr) {
    Refuse("handler", kErrorNoHandler, "the library's table has no row for it");
    return;
  }
  Pass("handler", "the library's table has a row for it");
}

}  // namespace

Trace TraceCall(const AskedCall& call) { return Tracer(call).Run(); }

}  // namespace ORBO::tool
