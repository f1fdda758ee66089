#include <unistd.h>

#include <webapi/WebEntry.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "platform/cgi.h"
#include "platform/cipher.h"
#include "platform/webapi_util.h"
#include "request/APIRequestPrivate.h"
#include "request/encrypted_params.h"
#include "util/error_codes.h"
#include "util/json_types.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

constexpr char kUploadContentType[] = "text/html; charset=\"UTF-8\"";

}  // namespace

bool WebEntry::InitParam(Json::Value& params) {
  if (!JSON::IsObject(params)) {
    response_->SetError(kErrorBadRequest);
    return false;
  }
  Json::Value& get_params = params["getParam"];
  if (request_->HasEnv("QUERY_STRING") && !InitGetParam(get_params)) {
    response_->SetError(kErrorBadRequest);
    return false;
  }
  if (request_->GetRequestMethod() != APIRequest::METHOD_POST) {
    return true;
  }
  Json::Value& post_params = params["postParam"];
  bool loaded;
  if (request_->IsUploadRequest()) {
    // The answer to a form upload is read by a page's frame.
    response_->SetHeader("Content-type", kUploadContentType);
    loaded = (JSON::Has(get_params, "api") && JSON::Has(get_params, "version") &&
              JSON::Has(get_params, "method")) ||
             LoadUploadAPIDesc(post_params);
  } else {
    loaded = InitPostParam(post_params);
  }
  if (!loaded) {
    response_->SetError(kErrorBadRequest);
  }
  return loaded;
}

bool WebEntry::InitGetParam(Json::Value& out) {
  const Json::Value& line =
      request_->private_->GetData("environ", "QUERY_STRING", Json::Value::nullSingleton());
  if (!JSON::IsString(line)) {
    response_->SetError(kErrorBadRequest);
    return false;
  }
  return DetectAndDecryptParamLine(JSON::AsString(line), out);
}

bool WebEntry::InitPostParam(Json::Value& out) {
  if (!JSON::IsObject(out) || request_->IsUploadRequest()) {
    return false;
  }
  const std::int64_t length = JSON::AsInt64(
      request_->private_->GetData("environ", "CONTENT_LENGTH", Json::Value::nullSingleton()));
  if (length <= 0 || static_cast<std::uint64_t>(length) > OrboCgiMaxBodySize()) {
    return false;
  }
  std::string body;
  if (!ReadUpTo(STDIN_FILENO, static_cast<std::uint64_t>(length), body)) {
    return false;
  }
  body.resize(std::min(body.size(), body.find('\0')));
  return DetectAndDecryptParamLine(body, out);
}

bool WebEntry::DetectAndDecryptParamLine(const std::string& line, Json::Value& out) {
  std::string plain = line;
  if (OrboCgiDetectAndDecryptParamLine(plain.data()) == 0 ||
      !WebAPIUtil::strPairToJsonObj(plain.c_str(), out, true, true)) {
    return false;
  }
  if (!JSON::IsEmpty(out) && !DecryptAESParam(out)) {
    return false;
  }
  Json::Value* const nested = JSON::Find(out, "webapi");
  if (nested != nullptr && JSON::Has(*nested, kCipherTextMember)) {
    const std::string text = JSON::AsString(JSON::At(*nested, kCipherTextMember));
    JSON::Remove(*nested, kCipherTextMember);
    DecryptParam(text, *nested);
    JSON::Remove(*nested, kCipherTokenMember);
  }
  return true;
}

bool WebEntry::DecryptParam(const std::string& text, Json::Value& out) {
  return DecryptParamText(text, out) && (JSON::IsEmpty(out) || DecryptAESParam(out));
}

bool WebEntry::DecryptAESParam(Json::Value& params) { return ORBO::DecryptAESParam(params); }

}  // namespace ORBO
