// The settings of a network interface, checked before anybody applies them: the
// form of each field by a check table and the library's validators, then what
// concerns several fields by the handler.  A client learns every field that is
// wrong, and why, at once.

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>
#include <webapi/APIValidator.h>

#include <algorithm>
#include <string>

#include "ip_network.h"

namespace {

using ORBO::APIParameter;
using ORBO::APIRequest;
using ORBO::APIResponse;
using ORBO::APIValidator;

constexpr int kErrorBadSettings = 1001;

constexpr Json::ArrayIndex kMostDNSServers = 3;
constexpr int kSmallestMTU = 576;       // every IPv4 host accepts it (RFC 791)
constexpr int kSmallestMTUIPv6 = 1280;  // RFC 8200, section 5
constexpr int kLargestMTU = 9000;
constexpr int kLongestPrefixWithEnds = 30;  // RFC 3021

// The fields that are wrong, each with its reason.
class Problems {
 public:
  void Add(const char* parameter, const char* reason) {
    Json::Value problem(Json::objectValue);
    problem["parameter"] = parameter;
    problem["reason"] = reason;
    list_.append(problem);
  }

  // Sets the error; false if there are no problems.
  bool Report(APIResponse* response) const {
    if (list_.empty()) {
      return false;
    }
    response->SetError(kErrorBadSettings, list_);
    return true;
  }

 private:
  Json::Value list_{Json::arrayValue};
};

bool IsServerList(const Json::Value& servers) {
  return servers.size() <= kMostDNSServers &&
         std::all_of(servers.begin(), servers.end(), [](const Json::Value& server) {
           return server.isString() && APIValidator::IsIP(server.asString());
         });
}

APIParameter<std::string> Text(APIRequest* request, const char* name,
                               bool (*validator)(const std::string&)) {
  return request->GetAndCheckString(name, APIRequest::PARAM_OPTIONAL, validator);
}

// A client leaves a field out when it has no such setting; null would say the
// same in a second way.
template <typename T>
bool IsUnusable(const APIParameter<T>& parameter) {
  return parameter.IsInvalid() || parameter.IsReset();
}

// --- Each field by itself ---

void CheckNames(APIRequest* request, Problems& problems) {
  const auto hostname =
      request->GetAndCheckString("hostname", APIRequest::PARAM_REQUIRED, APIValidator::IsHostname);
  if (IsUnusable(hostname)) {
    problems.Add("hostname", "no host name");
  }
  if (IsUnusable(Text(request, "domain", APIValidator::IsDomain))) {
    problems.Add("domain", "no domain");
  }
}

void CheckAddresses(APIRequest* request, Problems& problems) {
  const auto address =
      request->GetAndCheckString("address", APIRequest::PARAM_REQUIRED, APIValidator::IsIP);
  if (IsUnusable(address)) {
    problems.Add("address", "no address");
  }
  const auto netmask = Text(request, "netmask", APIValidator::IsIPv4);
  if (IsUnusable(netmask) || (netmask.IsSet() && example::PrefixOfNetmask(netmask.Get()) < 1)) {
    problems.Add("netmask", "no netmask");
  }
  if (IsUnusable(Text(request, "gateway", APIValidator::IsIP))) {
    problems.Add("gateway", "no address");
  }
  if (IsUnusable(request->GetAndCheckUnitArray("dns", APIRequest::PARAM_OPTIONAL, IsServerList))) {
    problems.Add("dns", "not up to three addresses");
  }
}

void CheckNumbers(APIRequest* request, Problems& problems) {
  const auto prefix = request->GetAndCheckInt("prefix", APIRequest::PARAM_OPTIONAL);
  if (IsUnusable(prefix) || (prefix.IsSet() && !APIValidator::IsGreater(prefix, 0))) {
    problems.Add("prefix", "no number of bits");
  }
  if (IsUnusable(
          request->GetAndCheckInt("port", APIRequest::PARAM_OPTIONAL, APIValidator::IsPort))) {
    problems.Add("port", "not 0 to 65535");
  }
  const auto mtu = request->GetAndCheckInt("mtu", APIRequest::PARAM_OPTIONAL);
  if (IsUnusable(mtu) ||
      (mtu.IsSet() && !APIValidator::IsBetween(mtu, kSmallestMTU, kLargestMTU))) {
    problems.Add("mtu", "not 576 to 9000");
  }
}

bool CheckFields(APIRequest* request, APIResponse* response) {
  Problems problems;
  CheckNames(request, problems);
  CheckAddresses(request, problems);
  CheckNumbers(request, problems);
  return !problems.Report(response);
}

// --- The fields together; each has the right form ---

struct Network {
  example::Address address;
  int prefix = 0;
  example::Address first, last;
};

// The network's size by the prefix or, for IPv4, the netmask.
bool ReadNetwork(APIRequest* request, Network& network, Problems& problems) {
  const auto prefix = request->GetAndCheckInt("prefix", APIRequest::PARAM_OPTIONAL);
  const auto netmask = request->GetAndCheckString("netmask", APIRequest::PARAM_OPTIONAL);
  network.address =
      example::ToAddress(request->GetAndCheckString("address", APIRequest::PARAM_REQUIRED).Get());
  const bool ipv4 = network.address.bits == 32;
  if (prefix.IsSet() == netmask.IsSet()) {
    problems.Add("prefix", "either this or a netmask");
    return false;
  }
  if (netmask.IsSet() && !ipv4) {
    problems.Add("netmask", "IPv6 has a prefix");
    return false;
  }
  network.prefix = prefix.IsSet() ? prefix.Get() : example::PrefixOfNetmask(netmask.Get());
  if (network.prefix > network.address.bits) {
    problems.Add("prefix", "longer than the address");
    return false;
  }
  network.first = example::FirstOfNetwork(network.address, network.prefix);
  network.last = example::LastOfNetwork(network.address, network.prefix);
  return true;
}

// The ends of an IPv4 network stand for the network and for all of its hosts.
bool IsHost(const Network& network, const example::Address& address) {
  return address.bits != 32 || network.prefix > kLongestPrefixWithEnds ||
         (!example::IsSame(address, network.first) && !example::IsSame(address, network.last));
}

void CheckGateway(const std::string& text, const Network& network, Problems& problems) {
  const example::Address gateway = example::ToAddress(text);
  const bool reachable =
      example::IsSame(example::FirstOfNetwork(gateway, network.prefix), network.first) ||
      (network.address.bits == gateway.bits && example::IsLinkLocal(gateway));
  if (!reachable) {
    problems.Add("gateway", "not in the network of the address");
  } else if (example::IsSame(gateway, network.address)) {
    problems.Add("gateway", "the address itself");
  } else if (!IsHost(network, gateway)) {
    problems.Add("gateway", "no host of the network");
  }
}

void Check(APIRequest* request, APIResponse* response) {
  Problems problems;
  Network network;
  if (ReadNetwork(request, network, problems)) {
    if (!IsHost(network, network.address)) {
      problems.Add("address", "no host of the network");
    }
    const auto gateway = request->GetAndCheckString("gateway", APIRequest::PARAM_OPTIONAL);
    if (gateway.IsSet()) {
      CheckGateway(gateway.Get(), network, problems);
    }
    const auto mtu = request->GetAndCheckInt("mtu", APIRequest::PARAM_OPTIONAL);
    if (mtu.IsSet() && network.address.bits == 128 && APIValidator::IsLess(mtu, kSmallestMTUIPv6)) {
      problems.Add("mtu", "below 1280 for IPv6");
    }
  }
  if (problems.Report(response)) {
    return;
  }
  Json::Value data(Json::objectValue);
  data["network"] = example::ToText(network.first) + "/" + std::to_string(network.prefix);
  response->SetSuccess(data);
}

ORBO::_tag_API_TABLE methods[] = {
    {"ORBO.Example.Network", 1, "check", Check},
    {nullptr, 0, nullptr, nullptr},
};

ORBO::_tag_API_CHECK_TABLE checks[] = {
    {"ORBO.Example.Network", 1, "check", CheckFields, nullptr, nullptr},
    {nullptr, 0, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
ORBO::_tag_API_CHECK_TABLE* GetAPICheckTable() { return checks; }
