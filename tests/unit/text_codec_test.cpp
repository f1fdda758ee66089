#include <gtest/gtest.h>

#include <string>

#include "platform/webapi_util.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"

namespace ORBO::WebAPIUtil {
namespace {

TEST(URLCodec, LeavesMalformedEscapesAlone) {
  const struct {
    std::string text;
    std::string decoded;
  } rows[] = {
      {"a%20b%2fC%2F", "a b/C/"},
      {"%", "%"},
      {"%4", "%4"},
      {"%4g%g4", "%4g%g4"},
      {"%%41", "%A"},
      {"%2541", "%41"},
      {"a+b", "a+b"},
      {"%00", std::string(1, '\0')},
      {"%FF", "\xFF"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(row.decoded, URLDecode(row.text, true));
  }
  EXPECT_EQ("a b+", URLDecode("a+b%2B", false));
}

TEST(URLCodec, EncodesEverythingButUnreservedCharacters) {
  EXPECT_EQ("AZaz09-._~%20%2B%2F%25%00%C3%A9",
            URLEncode(std::string("AZaz09-._~ +/%\0\xC3\xA9", 17)));
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    bytes += static_cast<char>(byte);
  }
  EXPECT_EQ(bytes, URLDecode(URLEncode(bytes), false));
}

TEST(ParseToArray, TrimsThePieces) {
  const struct {
    const char* text;
    const char* separator;
    const char* expected;
  } rows[] = {
      {"a=1; b=2", ";", R"(["a=1","b=2"])"},
      {" a \t;; \t ;b", ";", R"(["a","","","b"])"},
      {"a", ";", R"(["a"])"},
      {"a b", " ", R"(["a","b"])"},
      {";", ";", R"(["",""])"},
      {"a;b", "", R"(["a;b"])"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(row.expected, JSON::ToText(ParseToArray(row.text, row.separator)));
  }
}

TEST(ReadJsonFile, TakesCommentsAndNothingElseBesideTheValue) {
  const WebAPIDirectory directory;
  directory.Write("good", "// made by hand\n{\"a\": 1 /* one */}\n");
  directory.Write("bad", "{\"a\": 1} x");
  Json::Value value("before");
  EXPECT_FALSE(ReadJsonFile("missing", value));
  EXPECT_FALSE(ReadJsonFile("bad", value));
  EXPECT_EQ(Json::Value("before"), value);
  EXPECT_TRUE(ReadJsonFile("good", value));
  EXPECT_EQ(FromText("{\"a\":1}"), value);
}

}  // namespace
}  // namespace ORBO::WebAPIUtil
