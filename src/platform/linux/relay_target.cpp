#include "platform/linux/relay_target.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "platform/linux/group_member.h"
#include "platform/linux/key_value_text.h"
#include "platform/linux/platform_conf.h"
#include "platform/linux/private_file.h"
#include "platform/linux/secret_file.h"
#include "platform/users.h"
#include "util/Descriptor.h"
#include "util/number_text.h"
#include "util/paths.h"

namespace ORBO {
namespace {

constexpr char kDirectory[] = "/etc/orbo/relay.d";
constexpr unsigned long long kLargestFile = 65536;
constexpr std::size_t kLongestURL = 2048;
constexpr std::size_t kLongestToken = 1024;
constexpr std::string_view kPinStart = "sha256//";
constexpr std::size_t kPinSize = kPinStart.size() + 44;  // 32 bytes in Base64
constexpr long kLongestTimeout = 3600;
constexpr long kLongestUploadTimeout = 86400;
constexpr std::int64_t kLargestAnswer = 1 << 30;

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

bool IsVisible(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7f; });
}

// An absolute URL of HTTP without a fragment, and without a user, whose password would
// stand in it.
bool IsURL(std::string_view url) {
  const std::size_t start = url.find("://");
  if (start == std::string_view::npos || url.size() > kLongestURL || !IsVisible(url) ||
      url.find('#') != std::string_view::npos) {
    return false;
  }
  const std::string_view scheme = url.substr(0, start);
  const std::string_view rest = url.substr(start + 3);
  const std::string_view host = rest.substr(0, rest.find_first_of("/?"));
  return (scheme == "http" || scheme == "https") && !host.empty() &&
         host.find_first_of("@\\") == std::string_view::npos;
}

bool IsPin(std::string_view pin) {
  return pin.size() == kPinSize && StartsWith(pin, kPinStart) &&
         std::all_of(pin.begin(), pin.end(), [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                  c == '+' || c == '/' || c == '=';
         });
}

// The values in the text of a file, and the first reason why they cannot be used.
class TargetReader {
 public:
  explicit TargetReader(std::string_view text) : text_(text) {}

  std::string Text(std::string_view key) const { return std::string(ValueOfKey(text_, key)); }

  // A number from 1 to `largest`, or `fallback` where there is no value.
  std::int64_t Number(std::string_view key, std::int64_t fallback, std::int64_t largest) {
    const std::string value = Text(key);
    JSON::Integer integer;
    std::int64_t number = fallback;
    const bool is_usable =
        value.empty() || (JSON::ReadInteger(value, integer) && JSON::ToSigned(integer, number) &&
                          number > 0 && number <= largest);
    Require(is_usable, std::string(key) + " is no number from 1 to " + std::to_string(largest));
    return is_usable ? number : fallback;
  }

  void Require(bool condition, const std::string& problem) {
    if (!condition && problem_.empty()) {
      problem_ = problem;
    }
  }

  const std::string& problem() const { return problem_; }

 private:
  std::string_view text_;
  std::string problem_;
};

// Reads how the target is told from an impostor.
void ReadTrust(TargetReader& reader, RelayTarget& out) {
  const std::string verify = reader.Text("verify");
  const std::string authority = reader.Text("ca");
  out.pin = reader.Text("pin");
  out.is_verified = verify != "no";
  out.authority = authority.empty() ? "" : RootedPath(authority);
  reader.Require(verify.empty() || verify == "yes" || verify == "no",
                 "verify is neither yes nor no");
  reader.Require(authority.empty() || authority.front() == '/', "ca is no absolute path");
  reader.Require(out.pin.empty() || IsPin(out.pin), "pin is no sha256// with 44 characters");
  reader.Require(StartsWith(out.url, "https:") || (verify + authority + out.pin).empty(),
                 "verify, ca and pin need a URL with https");
}

}  // namespace

std::string RelayTargetDirectory() { return RootedPath(kDirectory); }

std::vector<std::int64_t> RelayTargetIds() {
  std::vector<std::int64_t> ids;
  for (const std::string& name : PrivateFileNames(RelayTargetDirectory())) {
    JSON::Integer integer;
    std::int64_t id = 0;
    if (JSON::ReadInteger(name, integer) && JSON::ToSigned(integer, id) && id > 0 &&
        name == std::to_string(id)) {
      ids.push_back(id);
    }
  }
  std::sort(ids.begin(), ids.end());
  return ids;
}

bool ReadRelayTarget(std::int64_t id, RelayTarget& out, std::string& problem) {
  const Descriptor directory(
      open(RelayTargetDirectory().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  std::string text;
  struct stat status {};
  if (id <= 0 || !directory.IsOpen() ||
      !ReadSecretFile(directory.get(), std::to_string(id).c_str(), kLargestFile, text, status)) {
    problem = id <= 0 || errno == ENOENT ? "there is no such target"
              : errno == EPERM ? "its file has another owner, or others may read or write it"
                               : std::strerror(errno);
    return false;
  }
  TargetReader reader(text);
  RelayTarget target;
  target.url = reader.Text("url");
  target.token = reader.Text("token");
  target.users = SplitSetting(reader.Text("users"));
  reader.Require(IsURL(target.url), "url is no http:// or https:// URL");
  reader.Require(
      !target.token.empty() && target.token.size() <= kLongestToken && IsVisible(target.token),
      "token is missing or malformed");
  ReadTrust(reader, target);
  target.timeout = static_cast<long>(reader.Number("timeout", target.timeout, kLongestTimeout));
  target.upload_timeout = static_cast<long>(
      reader.Number("upload_timeout", target.upload_timeout, kLongestUploadTimeout));
  target.max_answer_size = static_cast<std::uint64_t>(reader.Number(
      "max_answer_size", static_cast<std::int64_t>(target.max_answer_size), kLargestAnswer));
  problem = reader.problem();
  if (problem.empty()) {
    out = std::move(target);
  }
  return problem.empty();
}

bool MayUseRelayTarget(const RelayTarget& target, const std::string& user) {
  if (user.empty()) {
    return false;
  }
  if (target.users.empty()) {
    return QLIBGroupIsAdminGroupMem(user.c_str(), 0) == 1;
  }
  return std::any_of(target.users.begin(), target.users.end(), [&user](const std::string& name) {
    return name.front() == '@' ? IsGroupMember(user, name.substr(1)) : name == user;
  });
}

}  // namespace ORBO
