#include <gmock/gmock.h>
#include <webapi/APIValidator.h>

#include <iterator>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "unit/LogCapture.h"
#include "unit/json.h"

namespace ORBO {
namespace {

using Texts = std::vector<std::string>;

Texts Words(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), {}};
}

TEST(APIValidator, ChecksTexts) {
  const std::string a63(63, 'a');
  const std::string a253 = a63 + "." + a63 + "." + a63 + "." + std::string(61, 'a');
  const std::string no_names =
      ". .. a..b .a nas. -a a- a.-b.c a_b m\xc3\xbc xn-- 1.2.3 127.1 0 a.256 "
      "a.0x a.0XfF a/b.c a.b.. a" +
      a63 + " " + a253 + "a b.a" + a63 + ".c ";
  const struct {
    const char* name;
    bool (*check)(const std::string&);
    std::string accepted, refused;
  } rows[] = {
      {"host name", APIValidator::IsHostname,
       "nas NAS-1 xn--bcher-kva 1.2.c a.0xg nas.example.com. " + a253 + " " + a253 + ".", no_names},
      {"domain", APIValidator::IsDomain, "a.b Example.COM. 3com.xn--p1ai", no_names + "nas nas-1"},
      {"IPv4", APIValidator::IsIPv4, "0.0.0.0 255.255.255.255",
       "1.2.3 256.1.1.1 01.2.3.4 0x1.2.3.4 ::1 1.2.3.4%a"},
      {"IPv6", APIValidator::IsIPv6,
       ":: ::ffff:1.2.3.4 FE80::1%eth0.1 febf::1%2 fe80::1%" + std::string(15, 'z'),
       "1.2.3.4 1::2::3 12345:: [::1] ::1/64 fe80::1% ::1%eth0 fec0::1%eth0 fe80::1%a/b fe80::1%-a "
       "fe80::1%a%b fe80::1%" +
           std::string(16, 'z')},
      {"IP", APIValidator::IsIP, "1.2.3.4 ::1", "nas 1.2.3.4:80"},
      {"Farlink id", APIValidator::IsFarlinkId, "- aZ-09", "a_b a."},
      {"digits", APIValidator::IsDigit, "0123", "-1 1.0 a1"},
      {"work group", APIValidator::IsWorkGroup, "a;b ]a \\;n", R"(; ][;:"<>*+\/|?,)"},
      {"NetBIOS", APIValidator::IsNetbios, "a Z" + std::string(254, '_'),
       "1abc _a a.b a" + std::string(255, 'b')},
      {"mail", APIValidator::IsEMail, R"(a@b a@b@c \[:@[;\ ("x")@A ~/@-)", "@b a@ a@b~ ]@b a@b]"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_THAT(Words(row.accepted), testing::Each(testing::ResultOf(row.check, true)));
    EXPECT_THAT(Words(row.refused), testing::Each(testing::ResultOf(row.check, false)));
    EXPECT_FALSE(row.check(""));
  }
  // The platform sees no NUL, patterns nothing behind it.
  EXPECT_FALSE(APIValidator::IsHostname({"a.b\0c", 5}) || APIValidator::IsDomain({"a.b\0c", 5}) ||
               APIValidator::IsIP({"1.2.3.4\0", 8}));
  EXPECT_TRUE(APIValidator::IsDigit({"1\0a", 3}));
  for (const int port : {0, 65535, 65536, -1, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(port == 0 || port == 65535, APIValidator::IsPort(port)) << port;
  }
}

TEST(APIValidator, KeepsPatternsByTheirAddress) {
  static char pattern[] = "^a$";
  EXPECT_TRUE(APIValidator::CheckRegex("a", pattern));
  pattern[1] = 'b';
  EXPECT_TRUE(APIValidator::CheckRegex("a", pattern)) << "compiled once";
  EXPECT_FALSE(APIValidator::CheckRegex("A", pattern) || APIValidator::CheckRegex("a", "^b$") ||
               APIValidator::CheckRegex("a", nullptr));
  LogCapture log;
  const char* const bad = "(";
  EXPECT_FALSE(APIValidator::CheckRegex("a", bad) || APIValidator::CheckRegex("(", bad));
  EXPECT_EQ(Texts(2, "APIValidator.cpp:56 Invalid pattern"), log.lines());
}

template <typename T>
APIParameter<T> Parameter(const T& value) {
  APIParameter<T> parameter;
  parameter.SetDefault(value);
  return parameter;
}

TEST(APIValidator, MembersBelongToLists) {
  // A value in a list.
  const Texts belonging = {R"("b" ["a","b"])",
                           R"(["b","a"] ["a","b"])",
                           R"({"x":"a","y":1} [1,"a"])",
                           "[] null",
                           "5 []",
                           "null []",
                           "[[1]] [[1]]"};
  const Texts others = {
      R"("c" ["a","b"])",   R"("1" [1])", R"("b" {"b":"b"})", R"("b" null)", R"(["a",1] ["a"])",
      R"({"x":"b"} ["a"])", "[] {}"};
  const auto belongs = [](const std::string& row) {
    const std::size_t blank = row.find(' ');
    const Json::Value value = FromText(row.substr(0, blank));
    const Json::Value list = FromText(row.substr(blank + 1));
    return value.isString() ? APIValidator::IsBelong(Parameter(value.asString()), list)
                            : APIValidator::IsBelong(Parameter(value), list);
  };
  EXPECT_THAT(belonging, testing::Each(testing::ResultOf(belongs, true)));
  EXPECT_THAT(others, testing::Each(testing::ResultOf(belongs, false)));
}

TEST(APIValidator, ComparesParameters) {
  const APIParameter<int> five = Parameter(5);
  EXPECT_TRUE(APIValidator::IsBetween(five, 5, 6) && APIValidator::IsBetween(five, -1, 5));
  EXPECT_FALSE(APIValidator::IsBetween(five, 6, 7) || APIValidator::IsBetween(five, 3, 4));
  EXPECT_TRUE(APIValidator::IsGreater(five, -6) && APIValidator::IsLess(five, 6));
  EXPECT_FALSE(APIValidator::IsGreater(five, 5) || APIValidator::IsLess(five, 5));
  EXPECT_TRUE(APIValidator::IsEqual(five, 5) && APIValidator::IsEqual(APIParameter<int>(), 0));
  const APIParameter<std::string> text = Parameter(std::string("a\0b", 3));
  EXPECT_TRUE(APIValidator::IsEqual(text, std::string("a\0b", 3)));
  EXPECT_FALSE(APIValidator::IsEqual(text, "a"));
  EXPECT_FALSE(APIValidator::IsEqual(APIParameter<std::string>(), nullptr));
  APIParameter<int> invalid;
  invalid.MarkInvalid();
  EXPECT_FALSE(APIValidator::IsBetween(invalid, 0, 0) || APIValidator::IsGreater(invalid, -1) ||
               APIValidator::IsLess(invalid, 1) || APIValidator::IsEqual(invalid, 0));
  APIParameter<Json::Value> list;
  list.MarkInvalid();
  EXPECT_FALSE(APIValidator::IsBelong(list, FromText("[]")));
}

}  // namespace
}  // namespace ORBO
