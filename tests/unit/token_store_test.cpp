#include "platform/linux/token_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "platform/access_token.h"
#include "platform/linux/base64url.h"
#include "platform/linux/crypto.h"
#include "unit/LogCapture.h"
#include "unit/WebAPIDirectory.h"
#include "unit/processes.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

class TokenStore : public testing::Test {
 protected:
  static std::string Directory() {
    return std::string(std::getenv("WEBAPI_ROOT")) + "/var/lib/orbo/tokens/";
  }

  static AccessToken Plan() {
    AccessToken token;
    token.user = "alice";
    token.note = "backup";
    token.scopes = {{"A.B", {"get", "list"}}, {"C", {"*"}}};
    return token;
  }

  static std::string Make(AccessToken token = Plan()) {
    std::string text;
    EXPECT_TRUE(CreateToken(token, text));
    return text;
  }

  // The user whom the platform takes the token for; "" if it refuses.
  static std::string Grant(const std::string& text, const char* api = "A.B",
                           const char* method = "get") {
    char user[493] = "unset";
    const int result = OrboAccessTokenGrant(text.c_str(), api, method, user, sizeof user);
    EXPECT_EQ(result < 0, *user == '\0');
    return user;
  }

  static std::string Read(const std::string& path) {
    std::string text;
    EXPECT_TRUE(ReadWholeFile(path, text));
    return text;
  }

  WebAPIDirectory root_;
};

TEST_F(TokenStore, ATokenOpensItsApisAndMethodsOnly) {
  const std::string text = Make();
  const std::tuple<const char*, const char*, bool> rows[] = {
      {"A.B", "list", true}, {"C", "anything", true}, {"A.B", "", false},  {"A.B", "*", false},
      {"a.b", "get", false}, {"A", "get", false},     {"*", "get", false},
  };
  for (const auto& [api, method, granted] : rows) {
    SCOPED_TRACE(std::string(api) + " " + method);
    EXPECT_EQ(granted ? "alice" : "", Grant(text, api, method));
  }
  char user[5];
  EXPECT_LT(OrboAccessTokenGrant(text.c_str(), "A.B", "get", user, sizeof user), 0);
  EXPECT_STREQ("", user);
}

TEST_F(TokenStore, AnyOtherTextIsRefused) {
  const std::string text = Make();
  const std::string other = Make();
  const std::size_t point = text.rfind('.');
  std::string flipped = text;
  flipped.back() = flipped.back() == 'A' ? 'Q' : 'A';
  const std::string id = text.substr(3, point - 3);
  for (const std::string& wrong :
       {std::string(), std::string("t1"), std::string("t1.."), text.substr(0, point),
        text.substr(0, point + 1), text + "x", text.substr(0, text.size() - 1), flipped,
        "t2" + text.substr(2), text.substr(0, point) + other.substr(other.rfind('.')),
        "t1.../" + text.substr(3), "t1..key" + text.substr(point), std::string(1 << 20, 't'),
        "t1." + id + ".json" + text.substr(point)}) {
    SCOPED_TRACE(wrong.substr(0, 100));
    EXPECT_EQ("", Grant(wrong));
  }
  EXPECT_EQ("alice", Grant(text));
}

TEST_F(TokenStore, TheSecretIsStoredNowhere) {
  const std::string text = Make();
  const std::string secret = text.substr(text.rfind('.') + 1);
  int files = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(Directory())) {
    EXPECT_EQ(std::string::npos, Read(entry.path()).find(secret));
    EXPECT_EQ(fs::perms(0600), entry.status().permissions());
    ++files;
  }
  EXPECT_EQ(2, files);  // the token and the key
}

TEST_F(TokenStore, AFileThatIsNoTokenOrRevokedGrantsNothing) {
  AccessToken token = Plan();
  std::string text;
  ASSERT_TRUE(CreateToken(token, text));
  const std::string path = Directory() + token.id + ".json";
  const std::string good = Read(path);
  const std::string linked = Directory() + "elsewhere";
  for (const std::string& content :
       {std::string(), good.substr(0, good.size() / 2), std::string("null"), std::string("{}"),
        "[" + good + "]", good + "x", good + std::string(300000, ' ')}) {
    SCOPED_TRACE(content.substr(0, 60));
    std::ofstream(path) << content;
    EXPECT_EQ("", Grant(text));
    EXPECT_TRUE(ListTokens().empty());
  }
  fs::rename(path, linked);
  std::ofstream(linked) << good;
  fs::create_symlink(linked, path);
  EXPECT_EQ("", Grant(text));
  fs::rename(linked, path);
  EXPECT_FALSE(RevokeToken("../tokens/" + token.id));
  EXPECT_EQ("alice", Grant(text));
  EXPECT_TRUE(RevokeToken(token.id));
  EXPECT_EQ("", Grant(text));
}

TEST_F(TokenStore, TokensThatCouldNotBeUsedAreNotMade) {
  std::vector<AccessToken> plans(6, Plan());
  plans[0].user.clear();
  plans[1].user = "a\nb";
  plans[2].scopes.clear();
  plans[3].scopes[0].api.clear();
  plans[4].scopes[0].methods.clear();
  plans[5].expires = -1;
  for (AccessToken& plan : plans) {
    std::string text;
    EXPECT_FALSE(CreateToken(plan, text));
    EXPECT_EQ(EINVAL, errno);
    EXPECT_EQ("", plan.id + text);
  }
}

TEST_F(TokenStore, ADamagedKeyIsNeverReplaced) {
  const std::string text = Make();
  fs::resize_file(Directory() + ".key", 31);
  LogCapture log;
  AccessToken token = Plan();
  std::string other;
  EXPECT_FALSE(CreateToken(token, other));
  EXPECT_EQ("", Grant(text));
  EXPECT_EQ(31U, fs::file_size(Directory() + ".key"));
}

TEST_F(TokenStore, OneKeyIsMadeHoweverManyComeFirst) {
  constexpr int kChildren = 8;
  const int made = SumOfProcesses(kChildren, [](int i) {
    std::string text;
    AccessToken token = Plan();
    const bool is_made = CreateToken(token, text);
    std::ofstream(Directory() + "../text" + std::to_string(i)) << text;
    return is_made ? 1 : 0;
  });
  EXPECT_EQ(kChildren, made);
  for (int i = 0; i < kChildren; ++i) {
    EXPECT_EQ("alice", Grant(Read(Directory() + "../text" + std::to_string(i))));
  }
}

TEST(Crypto, HmacIsThatOfTheStandard) {
  std::string digest;
  ASSERT_TRUE(HmacSHA256("Jefe", "what do ya want for nothing?", digest));
  EXPECT_EQ("W9zBRr9gdU5qBCQmCJV1x1oAPwidJzmDnexYuWTsOEM", Base64Url(digest));
}

}  // namespace
}  // namespace ORBO
