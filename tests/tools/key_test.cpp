#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>

#include "CommandRun.h"

namespace tools {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

class Keys : public CommandTest {};

TEST_F(Keys, AreListedNewestFirstAndMadeByRotation) {
  EXPECT_EQ(Document("key list --json"), Json::Value(Json::arrayValue));
  const std::string first = Output("key rotate");
  EXPECT_THAT(first, MatchesRegex("[0-9a-f]{16}\n"));
  const std::string second = Output("key rotate");
  const Json::Value list = Document("key list --json");
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0]["kid"].asString() + "\n" + list[1]["kid"].asString() + "\n", second + first);
  EXPECT_TRUE(list[0]["expires"].isNull());
  EXPECT_EQ(list[1]["expires"].asInt64() - list[0]["created"].asInt64(), 86400);
  EXPECT_THAT(Output("key list"), ContainsRegex("current\n.* accepted until "));
}

TEST_F(Keys, EncryptTakesAKeyOfThisSystemOrOfAnother) {
  // The first use makes a key; the end of the line is none of its text.
  EXPECT_THAT(Run("encrypt -", "a=1\n").output,
              MatchesRegex("__cIpHeRtExT=e1[.][0-9a-f]{16}[.][A-Za-z0-9_-]{123}\n"));

  const std::string other = "e1.f857ae4ed6e34e33.";
  std::string spki =
      "MFkwEwYHKoZIzj0CAQYIKoZIzj0DAQcDQgAEb_A7lJJBzh2t1DUZ5pYOCoW0GmmgXDKBA6orzhWUyhY8T3U6Vb8B"
      "3FP2wLDH7ueLQMb_fSWpbiKCuYnO9xwUSg";
  std::replace(spki.begin(), spki.end(), '_', '/');
  EXPECT_THAT(Output("encrypt --spki " + spki + "== a=1"), HasSubstr(other));
  std::ofstream(root() + "/key") << "-----BEGIN PUBLIC KEY-----\n"
                                 << spki.substr(0, 64) << "\n"
                                 << spki.substr(64) << "==\n-----END PUBLIC KEY-----\n";
  EXPECT_THAT(Output("encrypt --key-file key a=1"), HasSubstr(other));
}

TEST_F(Keys, WhatCannotBeDoneIsSaid) {
  std::ofstream(root() + "/text") << "no key\n";
  const struct {
    const char* arguments;
    int exit_code;
    const char* complaint;
  } rows[] = {
      {"encrypt --form rot13 a=1", 2, "not a form: rot13"},
      {"encrypt --spki x --key-file text a=1", 2, "exclude each other"},
      {"encrypt --key-file text a=1", 1, "no key on the curve P-256 in PEM: text"},
      {"encrypt a=1 > /dev/full", 1, "cannot write"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.arguments);
    const Result result = Run(row.arguments);
    EXPECT_EQ(result.exit_code, row.exit_code);
    EXPECT_THAT(result.errors, HasSubstr(row.complaint));
    EXPECT_EQ(result.output, "");
  }
  EXPECT_THAT(Run("encrypt -", std::string("a=\0b", 4)).errors, HasSubstr("has a NUL"));
}

}  // namespace
}  // namespace tools
