// Enciphered parameters.  The first byte of an input says what becomes of the rest:
//   t  it is the enciphered text of a line
//   k  its first line is the token of a pair, the rest the pair's text
//   s  it is a line that is sealed and sent as a text within "webapi"
//   p  the same as a pair
//   l  the same as a text within a line of other parameters
// In front of "s" or "p" may stand "c" and two bytes, which change what was sealed.

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
#include "support/scratch.h"
#include "support/target.h"
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

// What the line means, or null if it cannot be sent.
Json::Value Meaning(const std::string& line) {
  Json::Value params(Json::objectValue);
  const bool is_line = line.find('\0') == std::string::npos &&
                       WebAPIUtil::strPairToJsonObj(line, params, true, true);
  return is_line ? params : Json::Value();
}

// `line` sealed as a text or a pair, and what its place `place` holds changed by `change`.
Json::Value Sealed(const std::string& line, bool is_pair, std::size_t place, unsigned char change) {
  std::string token;
  std::string text;
  Require(is_pair ? SealAsPair(PublicKey(), line, WallClock(), token, text)
                  : SealAsText(PublicKey(), line, WallClock(), text));
  std::string& changed = is_pair && place % 2 == 0 ? token : text;
  char& c = changed[changed.size() * place / 256];
  c = static_cast<char>(c ^ change);
  Json::Value message;
  message[is_pair ? kKeyedTextMember : kCipherTextMember] = text;
  if (is_pair) {
    message[kKeyTokenMember] = token;
  }
  return message;
}

void CheckWithinLine(const std::string& line) {
  const Json::Value message = Sealed(line, false, 0, 0);
  std::string text = "x=1&__cIpHeRtExT=" + JSON::AsString(message[kCipherTextMember]) + "&y=2";
  const bool is_opened = OrboCgiDetectAndDecryptParamLine(text.data()) != 0;
  Require(is_opened || text.find(kCipherTextMember) == 4);
  if (line.find("__cIpHeR") == std::string::npos) {
    Require(is_opened == (line.find('\0') == std::string::npos));
    Require(!is_opened || Meaning("x=1&y=2&" + line) == Meaning(text.c_str()));
  }
}

}  // namespace

void TestInput(FuzzInput input) {
  PublicKey();
  Marks().clear();
  std::size_t place = 0;
  unsigned char change = 0;
  unsigned char form = input.TakeByte();
  if (form == 'c') {
    place = input.TakeByte();
    change = std::max<unsigned char>(input.TakeByte(), 1);
    form = input.TakeByte();
  }
  Json::Value message;
  if (form == 'k') {
    message[kKeyTokenMember] = input.TakeLine();
    message[kKeyedTextMember] = std::string(input.TakeRest());
  } else if (form == 't') {
    message[kCipherTextMember] = std::string(input.TakeRest());
  } else {
    const std::string line(input.TakeRest());
    if (form == 's' || form == 'p') {
      CheckMessage(Sealed(line, form == 'p', place, change), Meaning(line), change != 0);
    } else {
      CheckWithinLine(line);
    }
    return;
  }
  Require(Opened(message).isNull() && Marks().empty());
}

}  // namespace ORBO
