// Codecs of text: what is written is read as it was, and only what is written so.

#include <algorithm>
#include <string>

#include "platform/linux/base64url.h"
#include "platform/webapi_util.h"
#include "support/target.h"
#include "support/text.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

using WebAPIUtil::URLDecode;
using WebAPIUtil::URLEncode;

constexpr char kUnreserved[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

void CheckPercent(const std::string& text) {
  const std::string encoded = URLEncode(text);
  Require(encoded.size() == text.size() + 2 * CountOf(encoded, '%'));
  Require(encoded.find_first_not_of(std::string(kUnreserved) + '%') == std::string::npos);
  Require(URLDecode(encoded, true) == text && URLDecode(encoded, false) == text);

  const std::string decoded = URLDecode(text, true);
  const std::size_t escapes = (text.size() - decoded.size()) / 2;
  Require(decoded.size() + 2 * escapes == text.size() && escapes <= CountOf(text, '%'));
  Require(CountOf(text, '%') > 0 || decoded == text);
  std::string with_blanks = text;
  std::replace(with_blanks.begin(), with_blanks.end(), '+', ' ');
  Require(URLDecode(text, false) == URLDecode(with_blanks, true));
}

void CheckBase64Url(const std::string& text) {
  std::string bytes;
  Require(DecodeBase64Url(Base64Url(text), bytes) && bytes == text);
  // Of the texts that could stand for the same bytes only one is read.
  Require(DecodeBase64Url(text, bytes) ? Base64Url(bytes) == text : bytes.empty());
}

void CheckJsonString(const std::string& text) {
  const std::string quoted = JSON::ToText(Json::Value(text));
  Json::Value value;
  Require(JSON::Parse(quoted, value) && JSON::IsString(value));
  const std::string repaired = JSON::AsString(value);
  Require(JSON::ToText(value) == quoted);
  Require(repaired == text || repaired.find("\xEF\xBF\xBD") != std::string::npos);
  Require(std::none_of(quoted.begin(), quoted.end(),
                       [](char c) { return static_cast<unsigned char>(c) < ' '; }));
}

}  // namespace

void TestInput(FuzzInput input) {
  const std::string text(input.TakeRest());
  CheckPercent(text);
  CheckBase64Url(text);
  CheckJsonString(text);
}

}  // namespace ORBO
