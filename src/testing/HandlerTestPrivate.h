#pragma once

#include <json/value.h>

#include <string>

#include <webapi/testing/HandlerAnswer.h>

#include "testing/CallGuard.h"
#include "testing/SystemTree.h"
#include "testing/cgi_request.h"

namespace ORBO {

// What a HandlerTest holds: the system, the guard of its processes, and the call that is
// being described.
class HandlerTestPrivate {
 public:
  HandlerTestPrivate();

  // Keeps the first thing that could not be done, and why.  `error` is an errno or 0.
  void Fail(const std::string& what, int error);
  void Check(bool is_done, const std::string& what);
  const std::string& fault() const { return fault_; }

  // Installs the files whose paths `list` holds between "|".
  void Install(const std::string& list);
  // Logs in by the facts that a JSON description has for a session; nobody without "user".
  void LogIn(const Json::Value& facts);
  void GrantPrivilege(const std::string& name);
  void Set(const std::string& key, const std::string& value);
  // Reads the JSON description of a call.
  void ReadRequest(const std::string& json);
  // Serves the described call.
  HandlerAnswer Serve();

  SystemTree tree;
  CallGuard guard;
  CallDescription call;
  int time_limit = 30;

 private:
  void ReadMember(const std::string& name, const Json::Value& value);

  std::string fault_;
  std::string user_;
  std::string session_id_;
  std::string administrators_;
};

}  // namespace ORBO
