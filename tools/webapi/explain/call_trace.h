#pragma once

#include <string>
#include <vector>

namespace ORBO::tool {

// A call whose fate is asked for.
struct AskedCall {
  std::string api;
  int version;
  std::string method;
  std::string user;     // who has logged in; "" for nobody
  std::string address;  // of the client; "" for an unknown one
  bool is_upload;
};

enum class StepResult {
  kPasses,
  kRefuses,
  kIgnored,  // refuses, and the call goes on
  kDepends,  // passes or refuses by what is not known here
};

// One of the steps that a request is led through, in their order.
struct Step {
  std::string name;
  StepResult result;
  int code;  // the error's, where the step refuses
  std::string reason;
};

struct Trace {
  std::vector<Step> steps;  // up to the one that refuses
  int code = 0;             // what the client gets; 0 if the call is served
};

// Leads `call` through the steps of the CGI program, by the same rules, up to the
// handler, which is not called.  The working directory is the web-API directory.
Trace TraceCall(const AskedCall& call);

}  // namespace ORBO::tool
