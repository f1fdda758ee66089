// Parameters that a client has enciphered by the command, which does what a browser
// does.

#include <json/reader.h>
#include <json/value.h>

#include <ctime>
#include <sstream>

#include "server_test.h"

namespace e2e {

namespace {

constexpr char kGetKey[] = "api=ORBO.ParameterKey&version=1&method=get";

class Encrypted : public ServerTest {
 protected:
  // The first call makes the key, as the user who is to read it.
  void SetUp() override { server().Get(kGetKey); }

  static std::string Seal(const std::string& line, const std::string& form = "cipher") {
    return Run("encrypt --form " + form + " '" + line + "'");
  }
  // The text of the single form alone.
  static std::string Text(const std::string& line) { return Seal(line).substr(13); }
};
E2E_UNDER_EVERY_SERVER(Encrypted);

TEST_P(Encrypted, ParametersOpenWhereverTheyStand) {
  const std::string compound = "api=ORBO.Entry.Request&version=1&method=request";
  const std::string call = R"({"api":"ORBO.Test.Probe","version":1,"method":"echo",)";
  const struct {
    std::string query;
    std::string form;  // "": a GET request
    std::string data;
  } rows[] = {
      {Seal(Probe("echo", "n=1&s=%22x%22")), "", R"({"n":1,"s":"x"})"},
      {Seal(Probe("echo", "n=1"), "aes"), "", R"({"n":1})"},
      {Probe("echo", Seal("n=2&m=3") + "&n=1&__cIpHeRtOkEn=t"), "", R"({"m":3,"n":2})"},
      {Probe("echo"), Seal("n=2&m=3") + "&n=1", R"({"m":3,"n":2})"},
      {Seal(Probe("echo", "n=1")), Seal("n=2", "aes"), R"({"n":2})"},
      {"", Seal(Seal(Probe("echo", "n=1"), "aes")), R"({"n":1})"},
      {Probe("echo"), "__cIpHeRtE%78T=%22" + Text("n=2") + "%22&n=1", R"({"n":2})"},
      {Probe("echo", R"(webapi={"__cIpHeRtExT":")" + Text("n=2") + R"(","__cIpHeRtOkEn":"t"}&n=1)"),
       "", R"({"n":1,"webapi":{"n":2}})"},
      {compound, "compound=[" + call + R"("__cIpHeRtExT":")" + Text("n=2") + "\"}]",
       R"({"has_fail":false,"result":[{"api":"ORBO.Test.Probe","data":{"n":2},)"
       R"("method":"echo","success":true,"version":1}]})"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.query + " " + row.form);
    const HttpResponse response =
        row.form.empty() ? server().Get(row.query) : server().Post(row.query, row.form);
    EXPECT_EQ(response.body, Success(row.data));
  }
}

TEST_P(Encrypted, WhatIsNotFreshAndWholeIsRefused) {
  const std::string once = Seal(Probe("echo", "n=1"));
  EXPECT_EQ(server().Get(once).body, Success(R"({"n":1})"));
  EXPECT_EQ(server().Get(once).body, Failure(101)) << "sent again";
  EXPECT_EQ(server().Post("", once).body, Failure(101));
  const std::string pair = Seal("n=1", "aes");
  const std::string other = Seal("n=2", "aes");
  const std::size_t amp = pair.find('&');
  for (const std::string& wrong :
       {pair.substr(0, amp) + other.substr(amp), Seal("n=1") + "A", Seal("n=1") + "&" + Seal("n=2"),
        std::string("__cIpHeRtExT=") + std::string(100000, 'A')}) {
    SCOPED_TRACE(wrong.substr(0, 400));
    EXPECT_EQ(server().Post(Probe("echo"), wrong).body, Failure(101));
  }
  EXPECT_EQ(server().Post(Probe("echo"), "m=1&__cIpHeRtE%78T=x").body, Success(R"({"m":1})"));
}

TEST_P(Encrypted, KeyIsThereForEverybodyAndMayBeRotated) {
  Json::Value body;
  std::istringstream(server().Get(kGetKey).body) >> body;
  const Json::Value& data = body["data"];
  EXPECT_EQ(data["algorithm"].asString(), "ECDH-P256+HKDF-SHA256+AES256GCM");
  EXPECT_NEAR(static_cast<double>(data["time"].asInt64()) / 1000,
              static_cast<double>(std::time(nullptr)), 60);
  const std::string early =
      Run("encrypt --spki " + data["spki"].asString() + " '" + Probe("echo", "n=1") + "'");
  const std::string next = Run("key rotate");
  EXPECT_NE(next, data["kid"].asString());
  EXPECT_NE(server().Get(kGetKey).body.find(next), std::string::npos);
  EXPECT_EQ(server().Get(early).body, Success(R"({"n":1})"));
}

}  // namespace

}  // namespace e2e
