// The parameters of a request: the first line is the query string, the rest the body.

#include <json/reader.h>
#include <webapi/APIRequest.h>

#include <memory>
#include <string>

#include "platform/cgi.h"
#include "platform/cipher.h"
#include "platform/webapi_util.h"
#include "support/scratch.h"
#include "support/target.h"
#include "support/text.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

using WebAPIUtil::strPairToJsonObj;
using WebAPIUtil::URLEncode;

constexpr std::size_t kMostPairs = 4096;

// What the packaged reader makes of a text that the system's own has accepted.
void CheckByOtherReader(const std::string& text, const Json::Value& value) {
  static const auto reader = [] {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["strictRoot"] = false;
    builder["rejectDupKeys"] = false;
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
  }();
  // It refuses surrogates that stand alone.
  if (text.find("\\u") == std::string::npos) {
    Json::Value other;
    Require(reader->parse(text.data(), text.data() + text.size(), &other, nullptr));
    Require(other == value);
  }
}

std::string ToLine(const Json::Value& params) {
  std::string line;
  for (auto param = params.begin(); param != params.end(); ++param) {
    line += URLEncode(param.name()) + "=" + URLEncode(JSON::ToText(*param)) + "&";
  }
  return line;
}

Json::Value Read(const std::string& line) {
  Json::Value params(Json::objectValue);
  Json::Value texts(Json::objectValue);
  const bool is_read = strPairToJsonObj(line, params, true, true);
  Require(strPairToJsonObj(line, texts, true, false) || CountOf(line, '&') >= kMostPairs);
  Require(is_read ? params.size() == texts.size() : params.empty());
  for (const std::string& name : params.getMemberNames()) {
    const std::string text = JSON::AsString(texts[name]);
    Json::Value parsed;
    if (params[name] != texts[name]) {
      CheckByOtherReader(text, params[name]);
    } else {
      const std::size_t last = text.find_last_not_of(" \t\r\n");
      Require(text.find_first_not_of(" \t\r\n") != 0 || last + 1 != text.size() ||
              !JSON::Parse(text, parsed));
    }
  }

  // Written and read again it is the same, but for malformed UTF-8, which is repaired.
  Json::Value repaired(Json::objectValue);
  Json::Value again(Json::objectValue);
  Require(strPairToJsonObj(ToLine(params), repaired, true, true));
  Require(strPairToJsonObj(ToLine(repaired), again, true, true) && again == repaired);
  return params;
}

bool IsPlain(const Json::Value& params) {
  const Json::Value* const nested = JSON::Find(params, "webapi");
  return !JSON::Has(params, kCipherTextMember) && !JSON::Has(params, kKeyTokenMember) &&
         (nested == nullptr || IsPlain(*nested));
}

void CheckTyped(APIRequest& request, const std::string& name) {
  const auto list = request.GetAndCheckUnitArray(name, APIRequest::PARAM_OPTIONAL);
  Require(!list.IsSet() || JSON::IsArray(list.Get()));
  request.GetAndCheckString(name, APIRequest::PARAM_REQUIRED);
  request.GetAndCheckInt(name, APIRequest::PARAM_REQUIRED);
  request.GetAndCheckIntegral<long long>(name, APIRequest::PARAM_REQUIRED);
  request.GetAndCheckBool(name, APIRequest::PARAM_REQUIRED);
  request.GetAndCheckReal(name, APIRequest::PARAM_REQUIRED);
  request.GetAndCheckObject(name, APIRequest::PARAM_REQUIRED);
}

}  // namespace

void TestInput(FuzzInput input) {
  EnterScratchRoot();
  std::string get = input.TakeLine();
  const std::string post(input.TakeRest());
  Json::Value params;
  params["getParam"] = Read(get);
  params["postParam"] = Read(post);

  APIRequest request{Json::Value()};
  request.InitParam(params, false);
  const bool is_plain = IsPlain(params["getParam"]) && IsPlain(params["postParam"]);
  Json::Value merged = params["getParam"];
  for (const std::string& name : params["postParam"].getMemberNames()) {
    merged[name] = params["postParam"][name];
  }
  Require(!is_plain || request.GetParam("", Json::Value()) == merged);
  for (const std::string& name : merged.getMemberNames()) {
    CheckTyped(request, name);
  }

  const std::string before = get.c_str();
  const bool is_opened = OrboCgiDetectAndDecryptParamLine(get.data()) != 0;
  Require(before == get.c_str() || before.find(kCipherTextMember) != std::string::npos);
  Require(is_opened || before == get.c_str());
}

}  // namespace ORBO
