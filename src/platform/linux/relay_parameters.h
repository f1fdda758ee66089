#pragma once

#include <json/value.h>

#include <map>
#include <string>
#include <string_view>

namespace ORBO {

// A call as it is made at the target.
struct RelayCall {
  std::string api;
  int version = 0;
  std::string method;

  bool operator==(const RelayCall& other) const {
    return api == other.api && version == other.version && method == other.method;
  }
};

// Whether the parameter is not the caller's to hand on: it names the call, or shows the
// caller's credential on this server.
bool IsOwnParameter(std::string_view name);

// Appends "name=value" to the parameter line, such that the parameter line's reader
// makes the same value of it.
void AppendRelayParameter(const std::string& name, const Json::Value& value, std::string& line);

// The parameter line of the call with its parameters and the credential.
std::string RelayParameterLine(const RelayCall& call, const Json::Value& params,
                               const std::string& token);

}  // namespace ORBO
