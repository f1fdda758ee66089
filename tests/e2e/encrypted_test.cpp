// Parameters that a client has enciphered by the command, which does what a browser
// does; the tests of the client have more of what that makes.

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
  const struct {
    std::string query;
    std::string form;  // "": a GET request
    std::string data;
  } rows[] = {
      {Seal(Probe("echo", "n=1&s=%22x%22")), "", R"({"n":1,"s":"x"})"},
      {Seal(Probe("echo", "n=1"), "aes"), "", R"({"n":1})"},
      {Probe("echo", Seal("n=2&m=3") + "&n=1&__cIpHeRtOkEn=t"), "", R"({"m":3,"n":2})"},
      {Seal(Probe("echo", "n=1")), Seal("n=2", "aes"), R"({"n":2})"},
      {"", Seal(Seal(Probe("echo", "n=1"), "aes")), R"({"n":1})"},
      {Probe("echo"), "__cIpHeRtE%78T=%22" + Text("n=2") + "%22&n=1", R"({"n":2})"},
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
  for (const std::string& wrong : {pair.substr(0, amp) + other.substr(amp), Seal("n=1") + "A",
                                   Seal("n=1") + "&" + Seal("n=2")}) {
    EXPECT_EQ(server().Post(Probe("echo"), wrong).body, Failure(101)) << wrong;
  }
  EXPECT_EQ(server().Post(Probe("echo"), "m=1&__cIpHeRtE%78T=x").body, Success(R"({"m":1})"));
}

}  // namespace

}  // namespace e2e
