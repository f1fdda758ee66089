#include "testing/HandlerTestPrivate.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <utility>
#include <vector>

#include "platform/linux/platform_conf.h"
#include "platform/linux/session_store.h"
#include "testing/serve_call.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

constexpr char kSettings[] = "/etc/orbo/platform.conf";
constexpr char kPrivileges[] = "/etc/orbo/privileges/";
constexpr char kSessionCookie[] = "id";

std::string Text(const Json::Value& object, const char* name) {
  return JSON::AsString(JSON::At(object, name));
}

Session SessionOf(const Json::Value& facts) {
  Session session;
  session.user = Text(facts, "user");
  session.address = Text(facts, "address");
  session.application = Text(facts, "application");
  session.language = JSON::Has(facts, "language") ? Text(facts, "language") : "enu";
  session.timeout = JSON::Has(facts, "timeout") ? JSON::AsInt(JSON::At(facts, "timeout")) : -1;
  return session;
}

// Whether the system's files can name the user.
bool IsOneWord(const std::string& user) { return SplitSetting(user) == std::vector{user}; }

// The first member of `object` that is none of `names`; "" if there is no such member.
std::string OtherMember(const Json::Value& object, std::initializer_list<const char*> names) {
  for (auto member = object.begin(); member != object.end(); ++member) {
    if (std::find(names.begin(), names.end(), member.name()) == names.end()) {
      return member.name();
    }
  }
  return "";
}

}  // namespace

HandlerTestPrivate::HandlerTestPrivate()
    : guard({[this](int skip_permission) { ServeCall(tree, skip_permission != 0); },
             [this] { tree.Remove(); }}) {
  Check(tree.IsReady(), "lay out a temporary directory");
}

void HandlerTestPrivate::Fail(const std::string& what, int error) {
  if (fault_.empty()) {
    fault_ = "cannot " + what + (error == 0 ? "" : std::string(": ") + std::strerror(error));
  }
}

void HandlerTestPrivate::Check(bool is_done, const std::string& what) {
  if (!is_done) {
    Fail(what, errno);
  }
}

void HandlerTestPrivate::Install(const std::string& list) {
  for (std::size_t begin = 0; begin < list.size();) {
    const std::size_t end = std::min(list.find('|', begin), list.size());
    const std::string file = list.substr(begin, end - begin);
    Check(file.empty() || tree.Install(file), "use the file " + file);
    begin = end + 1;
  }
}

void HandlerTestPrivate::LogIn(const Json::Value& facts) {
  const std::string other = OtherMember(facts, {"user", "administrator", "privileges", "address",
                                                "application", "language", "timeout", "idle"});
  if (!JSON::IsObject(facts) || !other.empty()) {
    Fail("log in with the session's member \"" + other + "\"", 0);
    return;
  }
  user_ = Text(facts, "user");
  session_id_.clear();
  if (user_.empty()) {
    return;
  }
  Check(tree.OpenSession(SessionOf(facts), JSON::AsInt(JSON::At(facts, "idle")), session_id_),
        "open a session of " + user_);
  if (JSON::AsBool(JSON::At(facts, "administrator"))) {
    errno = EINVAL;
    Check(IsOneWord(user_), "make an administrator of " + user_);
    administrators_ += " " + user_;
    Set("administrators", administrators_);
  }
  for (const Json::Value& privilege : JSON::At(facts, "privileges")) {
    GrantPrivilege(JSON::AsString(privilege));
  }
}

void HandlerTestPrivate::GrantPrivilege(const std::string& name) {
  errno = EINVAL;
  Check(IsOneWord(user_) && tree.Append(kPrivileges + name, "user " + user_ + "\n"),
        "grant the privilege " + name);
}

void HandlerTestPrivate::Set(const std::string& key, const std::string& value) {
  Check(tree.Append(kSettings, key + "=" + value + "\n"), "set " + key);
}

void HandlerTestPrivate::ReadRequest(const std::string& json) {
  Json::Value request;
  if (!JSON::Parse(json, request) || !JSON::IsObject(request)) {
    Fail("read the request as a JSON object: " + json, 0);
    return;
  }
  for (auto member = request.begin(); member != request.end(); ++member) {
    ReadMember(member.name(), *member);
  }
}

void HandlerTestPrivate::ReadMember(const std::string& name, const Json::Value& value) {
  if (name == "session") {
    LogIn(value);
  } else if (name == "httpMethod") {
    call.http_method = JSON::AsString(value);
  } else if (name == "skipPermission") {
    call.skip_permission = JSON::AsBool(value);
  } else if (name == "files" && JSON::IsArray(value)) {
    for (const Json::Value& file : value) {
      call.files.push_back({Text(file, "field"), Text(file, "name"), Text(file, "content")});
    }
  } else if (JSON::IsObject(value) &&
             (name == "params" || name == "headers" || name == "cookies" || name == "variables")) {
    for (auto member = value.begin(); member != value.end(); ++member) {
      if (name == "params") {
        call.params[member.name()] = *member;
      } else if (name == "cookies") {
        call.cookies[member.name()] = JSON::AsString(*member);
      } else {
        call.variables[name == "headers" ? HeaderVariable(member.name()) : member.name()] =
            JSON::AsString(*member);
      }
    }
  } else {
    Fail("read the request's member \"" + name + "\"", 0);
  }
}

HandlerAnswer HandlerTestPrivate::Serve() {
  CallDescription described;
  std::swap(described, call);
  if (!session_id_.empty()) {
    described.cookies[kSessionCookie] = session_id_;
  }
  Check(WriteCall(tree, ToCgiRequest(described)), "write the call");
  if (!fault_.empty()) {
    return HandlerAnswer("", fault_);
  }
  const std::string fault = guard.Run(described.skip_permission ? 1 : 0, time_limit);
  return HandlerAnswer(fault.empty() ? ReadOutput(tree) : "", fault);
}

}  // namespace ORBO
