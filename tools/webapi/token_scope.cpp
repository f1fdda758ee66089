#include "token_scope.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace ORBO::tool {
namespace {

constexpr std::string_view kAllMethods = "*";

// Names of APIs and methods are free but for what the lists here are made with and
// what no description can have.
bool IsName(std::string_view name) {
  return !name.empty() && std::none_of(name.begin(), name.end(), [](char c) {
    return static_cast<unsigned char>(c) <= ' ' || c == 0x7f || c == '/' || c == '*' || c == ':';
  });
}

}  // namespace

bool ReadScope(const std::string& text, TokenScope& out) {
  const std::size_t colon = text.find(':');
  TokenScope scope;
  scope.api = text.substr(0, colon);
  if (!IsName(scope.api)) {
    return false;
  }
  std::string_view rest =
      colon == std::string::npos ? kAllMethods : std::string_view(text).substr(colon + 1);
  for (bool more = true; more;) {
    const std::size_t comma = rest.find(',');
    const std::string_view method = rest.substr(0, comma);
    if (!IsName(method) && method != kAllMethods) {
      return false;
    }
    scope.methods.emplace_back(method);
    more = comma != std::string_view::npos;
    rest.remove_prefix(more ? comma + 1 : rest.size());
  }
  out = std::move(scope);
  return true;
}

std::string ScopeText(const TokenScope& scope) {
  if (std::find(scope.methods.begin(), scope.methods.end(), kAllMethods) != scope.methods.end()) {
    return scope.api;
  }
  std::string text = scope.api;
  char mark = ':';
  for (const std::string& method : scope.methods) {
    text.append(1, mark).append(method);
    mark = ',';
  }
  return text;
}

}  // namespace ORBO::tool
