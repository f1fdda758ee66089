#include <gtest/gtest.h>
#include <webapi/testing/HandlerTest.h>

namespace {

constexpr char kAPI[] = "ORBO.Example.Greeting";

TEST(Greeting, GreetsByNameAndRefusesWhatIsNone) {
  ORBO::HandlerTest test(WEBAPI_HANDLER_FILES);
  EXPECT_EQ(test.Param("name", "Ada").Call(kAPI, 1, "hello").Data()["text"], "Hello, Ada!");
  for (const Json::Value& name :
       {Json::Value(5), Json::Value(""), Json::Value(std::string(41, 'x'))}) {
    EXPECT_EQ(test.Param("name", name).Call(kAPI, 1, "hello").Text(),
              R"({"error":{"code":1001,"errors":{"parameter":"name"}},"success":false})");
  }
}

TEST(Greeting, SpeaksTwoLanguagesFromVersion2On) {
  ORBO::HandlerTest test(WEBAPI_HANDLER_FILES);
  EXPECT_EQ(
      test.Request(R"({"params": {"language": "de", "times": 2}})").Call(kAPI, 2, "hello").Text(),
      R"({"data":{"lines":["Hallo, world!","Hallo, world!"]},"success":true})");
  for (const char* params : {R"("name": "")", R"("language": "xx")", R"("times": 11)"}) {
    EXPECT_EQ(
        test.Request("{\"params\": {" + std::string(params) + "}}").Call(kAPI, 2, "hello").Code(),
        1001)
        << params;
  }
}

TEST(Greeting, RemembersTheNameInACookie) {
  ORBO::HandlerTest test(WEBAPI_HANDLER_FILES);
  const ORBO::HandlerAnswer answer =
      test.HttpMethod("POST").Param("name", "Ada L").Call(kAPI, 2, "remember");
  EXPECT_EQ(answer.Status(), 302);
  EXPECT_EQ(answer.Header("Location"),
            "http://localhost/webapi/entry.cgi?api=ORBO.Example.Greeting&version=2&method=hello");
  const std::string name = answer.Cookie("greeting_name");
  EXPECT_EQ(test.Cookie("greeting_name", name).Call(kAPI, 2, "card").Content(), "Hello, Ada L!\n");
}

TEST(Greeting, KnowsVisitorsFromMembers) {
  ORBO::HandlerTest test(WEBAPI_HANDLER_FILES);
  EXPECT_EQ(test.Call("ORBO.Example.Greeting.Visitor", 1, "hello").Data()["text"],
            "Hello, stranger!");
  EXPECT_EQ(test.Call("ORBO.Example.Greeting.Member", 1, "hello").Code(), 119);
  EXPECT_EQ(test.User("ben").Call("ORBO.Example.Greeting.Member", 1, "hello").Data()["text"],
            "Hello, ben!");
}

}  // namespace
