#include "platform/linux/relay_upload.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string_view>

#include "platform/linux/cgi_variables.h"
#include "platform/linux/multipart_header.h"
#include "platform/linux/relay_module.h"
#include "platform/linux/upload_rest.h"
#include "platform/upload.h"
#include "platform/webapi_util.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "relay_upload.cpp";
constexpr std::string_view kLineEnd = "\r\n";

bool HasControlCharacter(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == 0x7f;
  });
}

// `name` as it stands between quotes in the header of a part.
std::string Quoted(std::string_view name) {
  std::string quoted;
  for (const char c : name) {
    quoted.append(c == '"' || c == '\\' ? "\\" : "").push_back(c);
  }
  return quoted;
}

// The parameters in the URL of this process's request.
Json::Value QueryParameters() {
  Json::Value query(Json::objectValue);
  WebAPIUtil::strPairToJsonObj(std::string(CgiVariable("QUERY_STRING")), query, true, true);
  return query;
}

// Waits for bytes or the end of the input.
bool WaitForInput(int descriptor, long seconds) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(seconds);
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd input{descriptor, POLLIN, 0};
    const int ready = poll(&input, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
    if (ready >= 0 || errno != EINTR) {
      return ready > 0;
    }
  }
}

}  // namespace

bool RelayUpload::AddField(const std::string& name, const std::string& text) {
  const std::string part = "--" + boundary_ + "\r\nContent-Disposition: form-data; name=\"" +
                           Quoted(name) + "\"\r\n\r\n" + text;
  // The boundary is the client's choice: a text that holds it would become parts.
  if (HasControlCharacter(name) || part.find("\r\n--" + boundary_) != std::string::npos) {
    return false;
  }
  head_.append(part).append(kLineEnd);
  return true;
}

bool RelayUpload::AddParameter(const std::string& name, const Json::Value& value,
                               const Json::Value& query) {
  if (JSON::IsString(value)) {
    return AddField(name, JSON::AsString(value));
  }
  if (JSON::At(query, name) != value) {
    return AddField(name, JSON::ToText(value));
  }
  AppendRelayParameter(name, value, query_);
  return true;
}

bool RelayUpload::AddHead(const RelayCall& call, const Json::Value& params,
                          const std::string& token, const QLIBSZHASH& fields) {
  const Json::Value query = QueryParameters();
  for (auto param = params.begin(); param != params.end(); ++param) {
    const std::string name = param.name();
    // Of a field and a parameter of one name the field counts.
    if (!IsOwnParameter(name) && fields.pairs.count(name) == 0 &&
        !AddParameter(name, *param, query)) {
      return false;
    }
  }
  for (const auto& [name, text] : fields.pairs) {
    if (!IsOwnParameter(name) && !AddField(name, text)) {
      return false;
    }
  }
  return AddField("tid", token) && AddField("api", call.api) &&
         AddField("version", std::to_string(call.version)) && AddField("method", call.method);
}

int RelayUpload::Prepare(const RelayCall& call, const Json::Value& params, const std::string& token,
                         const std::string& content_type) {
  QLIBSZHASH fields;
  std::string start;
  boundary_ = MultipartBoundary(content_type);
  const int result =
      boundary_.empty() ? kUploadNoBoundary : BeginUploadRest(fields, start, &body_, rest_size_);
  if (result != kUploadLoaded) {
    Log(LOG_ERR, "%s:%d an upload cannot be read: %d", kSource, __LINE__, result);
    return kRelayBodyUnreadable;
  }
  // They say where the call goes, and are not among the parameters either.
  fields.pairs.erase("relay_ds");
  fields.pairs.erase("relay_timeout");
  if (!AddHead(call, params, token, fields)) {
    Log(LOG_ERR, "%s:%d a parameter of an upload cannot be a field", kSource, __LINE__);
    return kRelayBodyUnreadable;
  }
  const std::string_view begin = start.empty() ? body_->ahead() : start;
  if (begin.substr(0, kLineEnd.size()) == kLineEnd) {
    head_.resize(head_.size() - kLineEnd.size());
  }
  head_ += start;
  rest_size_ -= start.size();
  return 0;
}

std::int64_t RelayUpload::ReadRest(char* buffer, std::size_t size, long limit) {
  if (body_->ahead().empty() && !body_->IsWhole() &&
      (!WaitForInput(body_->descriptor(), limit) || !body_->ReadMore())) {
    return -1;
  }
  const std::string_view piece = body_->ahead().substr(0, size);
  std::memcpy(buffer, piece.data(), piece.size());
  body_->Skip(piece.size());
  return static_cast<std::int64_t>(piece.size());
}

}  // namespace ORBO
