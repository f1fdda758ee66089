// Enciphered parameters.  The first byte of an input says what becomes of the rest:
//   t  it is the enciphered text of a line
//   k  its first line is the token of a pair, the rest the pair's text
//   s  it is a line that is sealed and then sent, as text, as a pair and within "webapi"
//   c  the same, but the next two bytes change a byte of what was sealed

#include <algorithm>
#include <set>
#include <string>

#include "platform/cgi.h"
#include "platform/cipher.h"
#include "platform/linux/base64url.h"
#include "platform/linux/parameter_key.h"
#include "platform/linux/parameter_seal.h"
#include "platform/linux/replay_marks.h"
#include "platform/linux/wall_clock.h"
#include "platform/webapi_util.h"
#include "request/encrypted_params.h"
#include "support/FuzzInput.h"
#include "support/require.h"
#include "support/scratch.h"
#include "util/json_types.h"

namespace ORBO {
namespace {

std::set<std::string>& Marks() {
  static std::set<std::string> marks;
  return marks;
}

}  // namespace

// Instead of the file for each message, of which a process may make few in a second.
bool MarkMessage(const std::string& name, std::int64_t /*sent*/, std::int64_t /*now*/) {
  return Marks().insert(name).second;
}

namespace {

// The public key that messages are sealed for.
const std::string& PublicKey() {
  static const std::string spki = [] {
    EnterScratchRoot();
    ParameterKey key;
    std::string text;
    Require(CurrentParameterKey(key) && DecodeBase64Url(key.spki, text));
    return text;
  }();
  return spki;
}

struct Change {
  std::size_t place = 0;
  unsigned char by = 0;

  void Make(std::string& text) const {
    if (!text.empty()) {
      char& c = text[text.size() * place / 256];
      c = static_cast<char>(c ^ by);
    }
  }
};

// The parameters in plain, or null.
Json::Value Opened(Json::Value params) { return DecryptParam(params) ? params : Json::Value(); }

bool HasReserved(const Json::Value& params) {
  return JSON::Has(params, kCipherTextMember) || JSON::Has(params, kKeyTokenMember) ||
         JSON::Has(params, kKeyedTextMember) || JSON::Has(params, "webapi");
}

// A message opens once and to its line, and one that was changed does not open.
void CheckMessage(const Json::Value& message, const Json::Value& expected, bool is_changed) {
  Json::Value outer;
  outer["a"] = "before";
  outer["webapi"] = message;
  outer["webapi"]["kept"] = "before";
  const Json::Value opened = Opened(outer);
  if (is_changed || expected.isNull()) {
    Require(opened.isNull());
  } else if (!HasReserved(expected)) {
    Json::Value merged = expected;
    merged["kept"] = JSON::At(expected, "kept", Json::Value("before"));
    Require(opened["a"] == "before" && opened["webapi"] == merged);
  }
  Require(Opened(message).isNull());
}

void CheckLineInPlace(const std::string& sealed, const std::string& line) {
  std::string text = "x=1&__cIpHeRtExT=" + sealed + "&y=2";
  const bool has_reserved = line.find(kCipherTextMember) != std::string::npos;
  const bool is_opened = OrboCgiDetectAndDecryptParamLine(text.data()) != 0;
  if (!has_reserved && line.find(kCipherTokenMember) == std::string::npos &&
      line.find('\0') == std::string::npos) {
    Json::Value all(Json::objectValue);
    Json::Value some(Json::objectValue);
    WebAPIUtil::strPairToJsonObj("x=1&y=2&" + line, all, true, true);
    WebAPIUtil::strPairToJsonObj(text.c_str(), some, true, true);
    Require(is_opened && all == some);
  }
}

void CheckSealed(const std::string& line, const Change& change) {
  const std::int64_t now = WallClock();
  Json::Value expected(Json::objectValue);
  if (line.find('\0') != std::string::npos ||
      !WebAPIUtil::strPairToJsonObj(line, expected, true, true)) {
    expected = Json::Value();
  }
  Json::Value message;
  std::string text;
  Require(SealAsText(PublicKey(), line, now, text));
  change.Make(text);
  message[kCipherTextMember] = text;
  CheckMessage(message, expected, change.by != 0);

  if (change.by == 0) {
    Require(SealAsText(PublicKey(), line, now, text));
    CheckLineInPlace(text, line);
  }

  message = Json::Value();
  std::string token;
  Require(SealAsPair(PublicKey(), line, now, token, text));
  change.Make(change.place % 2 == 0 ? token : text);
  message[kKeyTokenMember] = token;
  message[kKeyedTextMember] = text;
  CheckMessage(message, expected, change.by != 0);
}

}  // namespace

void TestInput(FuzzInput input) {
  PublicKey();
  Marks().clear();
  Change change;
  Json::Value message;
  switch (input.TakeByte()) {
    case 't':
      message[kCipherTextMember] = std::string(input.TakeRest());
      Require(Opened(message).isNull() && Marks().empty());
      break;
    case 'k':
      message[kKeyTokenMember] = input.TakeLine();
      message[kKeyedTextMember] = std::string(input.TakeRest());
      Require(Opened(message).isNull() && Marks().empty());
      break;
    case 'c':
      change.place = input.TakeByte();
      change.by = std::max<unsigned char>(input.TakeByte(), 1);
      [[fallthrough]];
    default:
      CheckSealed(std::string(input.TakeRest()), change);
  }
}

}  // namespace ORBO
