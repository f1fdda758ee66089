#include "util/json_scan.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace ORBO::JSON {
namespace {

// Scans a copy that ends exactly where the text does, so that a sanitizer sees
// every step beyond it.
bool Scan(const std::string& text, Comments comments = Comments::kRefused) {
  const std::unique_ptr<char[]> copy(new char[text.size()]);
  text.copy(copy.get(), text.size());
  return IsJson({copy.get(), text.size()}, comments);
}

std::string Nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

// The texts that `list` holds with "|" between them.
std::vector<std::string> Split(const std::string& list) {
  std::vector<std::string> texts;
  std::istringstream stream(list);
  for (std::string text; std::getline(stream, text, '|');) {
    texts.push_back(text);
  }
  return texts;
}

TEST(JsonScan, AcceptsJson) {
  std::vector<std::string> texts =
      Split(R"(0|-0|10|-1.5|0.25e10|1E+2|1e-2|12345678901234567890123| null |true|""|"a"|"/'"|)"
            R"("\"\\\/\b\f\n\r\t\u00e9\uABCD"|"\ud83d\ude00"|)"
            R"([]|[ ]|[1, [2 ,"x"],{ }]|{}|{ "" : { "a":[],"a" :null} })");
  texts.insert(texts.end(), {"\t\r\nfalse\n", "\"\x7f\xff\"", Nested(kMaxDepth)});
  for (const std::string& text : texts) {
    SCOPED_TRACE(text);
    EXPECT_TRUE(Scan(text));
  }
}

TEST(JsonScan, RefusesAnythingElse) {
  std::vector<std::string> texts = Split(
      R"(| |+1|01|-|-01|.5|5.|1.e2|1e|1e+|0x1|1 2|1,|1a|nul|nulll|True|NaN|Infinity|'a'|)"
      R"("|"a|"\x"|"\|"\"|"\u"|"\u12"|"\u12g4"|"\ud83d"|"\ud83dx"|"\ud83d\n"|)"
      R"("\ud83d\u0041"|"\ud83d\ud83d"|"\ude00"|)"
      R"([|]|[1|[1,|[1,]|[,1]|[1 2]|[1}|[1]]|["a":1]|[1]// x|/* x */1|)"
      R"({|}|{"a"|{"a":|{"a":1|{"a":1,}|{"a" 1}|{"a",1}|{a:1}|{1:1}|{1}|{[]}|{"a":1,2}|{,}|{:1}|)"
      R"({"a":1]|{"a":})");
  texts.insert(texts.end(),
               {"\"a\nb\"", "\"\t\"", std::string("\"a\0b\"", 5), std::string("1\0", 2),
                std::string("\0", 1), "\xEF\xBB\xBF 1", "\xA0 1", "\v1", Nested(kMaxDepth + 1)});
  for (const std::string& text : texts) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(Scan(text));
  }
}

TEST(JsonScan, RefusesEveryBeginningOfAText) {
  const std::string text =
      R"({"a": [1.5e3, "x\ud83d\ude00\n", {"b" : null}], "c":-12, "d":[true,{}]})";
  ASSERT_TRUE(Scan(text));
  for (std::size_t length = 0; length < text.size(); ++length) {
    SCOPED_TRACE(length);
    EXPECT_FALSE(Scan(text.substr(0, length)));
  }
}

TEST(JsonScan, SkipsCommentsWhereAllowed) {
  const struct {
    const char* text;
    bool expected;
  } rows[] = {
      {"// a\n[1, /* b\n */ 2 // c\n] // d", true},
      {"/**//**/{/***/\"a\"//\n:/*/*/1}", true},
      {"\"// no comment\"", true},
      {"[1] /* open", false},
      {"[1] /*/", false},
      {"[1] /", false},
      {"[/ 1]", false},
      {"1 / 2", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(row.expected, Scan(row.text, Comments::kAllowed));
  }
  std::string many;
  for (int i = 0; i < 100000; ++i) {
    many += "/**/";
  }
  EXPECT_TRUE(Scan(many + "1", Comments::kAllowed));
}

TEST(JsonScan, TellsWhereValuesEnd) {
  const std::string_view text = "  {\"a\": [1, 2]} , \"b\\\"\" x";
  EXPECT_EQ(2U, SkipBlanks(text, 0, Comments::kRefused));
  EXPECT_EQ(15U, SkipValue(text, 2, Comments::kRefused));
  EXPECT_EQ(14U, SkipValue(text, 8, Comments::kRefused));
  EXPECT_EQ(7U, SkipString(text, 3) + 1);
  EXPECT_EQ(23U, SkipString(text, 18));
  EXPECT_EQ(kMalformed, SkipString(text, 2));
  EXPECT_EQ(kMalformed, SkipValue(text, 0, Comments::kRefused));
  EXPECT_EQ(kMalformed, SkipValue(text, text.size(), Comments::kRefused));
  EXPECT_EQ(text.size(), SkipBlanks(text, text.size(), Comments::kRefused));
}

TEST(JsonScan, DecodesEscapes) {
  EXPECT_EQ("", DecodeString(R"("")"));
  EXPECT_EQ("a\"\\/\b\f\n\r\tb", DecodeString(R"("a\"\\\/\b\f\n\r\tb")"));
  EXPECT_EQ(std::string("\0\x7f", 2), DecodeString(R"("\u0000\u007F")"));
  EXPECT_EQ("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF",
            DecodeString(R"("\u00e9\u20AC\ud83d\ude00\udbff\udfff")"));
}

}  // namespace
}  // namespace ORBO::JSON
