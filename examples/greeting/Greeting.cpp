// Greetings: typed parameters, two versions of one method, cookies, a redirect,
// an answer that is not JSON, and the three levels of permission.

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

#include <iostream>
#include <string>

namespace {

using ORBO::APIRequest;
using ORBO::APIResponse;

// Codes of an API of one's own begin above those of the system.
constexpr int kErrorBadParameter = 1001;

constexpr char kNameCookie[] = "greeting_name";
constexpr std::size_t kLongestName = 40;

bool IsName(const std::string& name) { return !name.empty() && name.size() <= kLongestName; }
bool IsRepeatCount(const int& times) { return times >= 1 && times <= 10; }

// Clients find the name of the parameter to mend under "errors".
void RefuseParameter(APIResponse* response, const char* name) {
  Json::Value errors(Json::objectValue);
  errors["parameter"] = name;
  response->SetError(kErrorBadParameter, errors);
}

std::string GreetingFor(const std::string& name, const std::string& language) {
  return (language == "de" ? "Hallo, " : "Hello, ") + name + "!";
}

// ORBO.Example.Greeting 1 hello: an optional parameter with a default.
void Hello(APIRequest* request, APIResponse* response) {
  auto name = request->GetAndCheckString("name", APIRequest::PARAM_OPTIONAL, IsName);
  if (name.IsInvalid()) {
    RefuseParameter(response, "name");
    return;
  }
  Json::Value data(Json::objectValue);
  data["text"] = GreetingFor(name.Get("world"), "en");
  response->SetSuccess(data);
}

// ORBO.Example.Greeting 2 hello: a later version may answer in another shape;
// clients of version 1 keep theirs.
void HelloInLanguage(APIRequest* request, APIResponse* response) {
  auto name = request->GetAndCheckString("name", APIRequest::PARAM_OPTIONAL, IsName);
  auto language = request->GetAndCheckString("language", APIRequest::PARAM_OPTIONAL);
  auto times = request->GetAndCheckInt("times", APIRequest::PARAM_OPTIONAL, IsRepeatCount);
  if (!name.SetDefault(request->GetCookie(kNameCookie, "world"))) {
    RefuseParameter(response, "name");
    return;
  }
  if (!language.SetDefault("en") || (language.Get() != "en" && language.Get() != "de")) {
    RefuseParameter(response, "language");
    return;
  }
  if (!times.SetDefault(1)) {
    RefuseParameter(response, "times");
    return;
  }
  Json::Value data(Json::objectValue);
  data["lines"] = Json::Value(Json::arrayValue);
  for (int i = 0; i < times.Get(); ++i) {
    data["lines"].append(GreetingFor(name.Get(), language.Get()));
  }
  response->SetSuccess(data);
}

// ORBO.Example.Greeting 2 remember: keeps the name in a cookie and sends the
// browser on to the greeting.
void Remember(APIRequest* request, APIResponse* response) {
  auto name = request->GetAndCheckString("name", APIRequest::PARAM_REQUIRED, IsName);
  if (name.IsInvalid()) {
    RefuseParameter(response, "name");
    return;
  }
  response->AddCookie("/", kNameCookie, name.Get());
  response->Redirect(request->GetEnv("SCRIPT_NAME", "/").asString() +
                     "?api=ORBO.Example.Greeting&version=2&method=hello");
  response->SetSuccess();
}

// ORBO.Example.Greeting 2 card: plain text instead of JSON.  Its description
// carries "allowDownload", without which the output would lead nowhere.
void Card(APIRequest* request, APIResponse* response) {
  response->SetEnableOutput(false);
  std::cout << "Content-Type: text/plain; charset=\"UTF-8\"\r\n\r\n"
            << GreetingFor(request->GetCookie(kNameCookie, "world"), "en") << "\n"
            << std::flush;
}

// For ORBO.Example.Greeting.Visitor the session check has been made and its
// failure ignored, for ORBO.Example.Greeting.Member nobody comes this far
// without a session.
void HelloUser(APIRequest* request, APIResponse* response) {
  const std::string user = request->GetLoginUserName();
  Json::Value data(Json::objectValue);
  data["text"] = GreetingFor(user.empty() ? "stranger" : user, "en");
  response->SetSuccess(data);
}

ORBO::_tag_API_TABLE methods[] = {
    {"ORBO.Example.Greeting", 1, "hello", Hello},
    {"ORBO.Example.Greeting", 2, "hello", HelloInLanguage},
    {"ORBO.Example.Greeting", 2, "remember", Remember},
    {"ORBO.Example.Greeting", 2, "card", Card},
    {"ORBO.Example.Greeting.Visitor", 1, "hello", HelloUser},
    {"ORBO.Example.Greeting.Member", 1, "hello", HelloUser},
    {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
