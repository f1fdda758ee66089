#include <webapi/APIValidator.h>

#include "platform/network.h"

namespace ORBO {
namespace {

constexpr int kFamilyIPv4 = 2;
constexpr int kFamilyIPv6 = 10;
constexpr unsigned kHighestPort = 65535;

// Whether the platform, which takes C strings, would see all of `value`.
bool IsPlainText(const std::string& value) {
  return !value.empty() && value.find('\0') == std::string::npos;
}

int AddressFamily(const std::string& value) {
  return IsPlainText(value) ? ORBONetGetAddrType(value.c_str()) : 0;
}

}  // namespace

bool APIValidator::IsHostname(const std::string& value) {
  return IsPlainText(value) && BlQLIBIsHostname(value.c_str()) != 0;
}

bool APIValidator::IsDomain(const std::string& value) {
  return IsPlainText(value) && BlQLIBIsDomain(value.c_str()) != 0;
}

bool APIValidator::IsIP(const std::string& value) { return AddressFamily(value) != 0; }

bool APIValidator::IsIPv4(const std::string& value) { return AddressFamily(value) == kFamilyIPv4; }

bool APIValidator::IsIPv6(const std::string& value) { return AddressFamily(value) == kFamilyIPv6; }

bool APIValidator::IsPort(const int& value) { return static_cast<unsigned>(value) <= kHighestPort; }

}  // namespace ORBO
