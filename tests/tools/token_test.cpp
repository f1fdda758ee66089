#include <gmock/gmock.h>

#include <cstdlib>
#include <ctime>

#include "CommandRun.h"

namespace tools {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

class Tokens : public CommandTest {
 protected:
  // Creates a token and gives its text.
  std::string Create(const std::string& arguments) const {
    const Result result = Run("token create " + arguments);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_THAT(result.output, ContainsRegex("^t1[.][A-Za-z0-9_-]+[.][A-Za-z0-9_-]+\n$"));
    EXPECT_THAT(result.errors, HasSubstr("not shown again"));
    return result.output.substr(0, result.output.find('\n'));
  }
};

std::string IdOf(const std::string& token) { return token.substr(3, token.rfind('.') - 3); }

TEST_F(Tokens, CreatedTokenIsListedWithoutItsSecretUntilItIsRevoked) {
  const std::string token = Create("alice --api ORBO.A:get,list --api=ORBO.B");
  const std::string id = IdOf(token);

  const Json::Value list = Document("token list --json");
  EXPECT_THAT(list.toStyledString(), Not(HasSubstr(token.substr(token.rfind('.') + 1))));
  EXPECT_EQ(list[0]["id"], id);
  EXPECT_EQ(list[0]["scopes"][0]["methods"][1], "list");
  EXPECT_EQ(list[0]["scopes"][1]["methods"][0], "*");
  EXPECT_THAT(Output("token list"), ContainsRegex("alice +ORBO.A:get,list ORBO.B "));

  // The others are revoked though one is unknown.
  const Result revoked = Run("token revoke " + token + " " + id);
  EXPECT_EQ(revoked.exit_code, 1);
  EXPECT_THAT(revoked.errors, Not(HasSubstr(token)));
  EXPECT_EQ(Document("token list --json"), Json::Value(Json::arrayValue));
}

TEST_F(Tokens, ExpiryIsASpanADateOrNever) {
  setenv("TZ", "UTC", 1);
  const std::int64_t now = std::time(nullptr);
  const struct {
    std::string text;
    std::int64_t expected;  // 0: never
  } rows[] = {
      {"30d", now + 30 * 86400},
      {"8w", now + 56 * 86400},
      {"2036-01-01", 2082758400},
      {"'2036-01-01 01:30'", 2082758400 + 5400},
      {"never", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const std::string id = IdOf(Create("alice --api A --expires " + row.text));
    const Json::Value entry = Document("token list --json")[0];
    EXPECT_EQ(entry["expires"].isNull(), row.expected == 0);
    EXPECT_NEAR(static_cast<double>(entry["expires"].asInt64()), static_cast<double>(row.expected),
                20);
    EXPECT_EQ(entry["expired"], false);
    Output("token revoke " + id);
  }
}

TEST_F(Tokens, NothingIsLeftOfATokenThatCouldNotBeShown) {
  EXPECT_EQ(Run("token create alice --api A > /dev/full 2>&1").exit_code, 1);
  EXPECT_EQ(Document("token list --json"), Json::Value(Json::arrayValue));
}

}  // namespace
}  // namespace tools
