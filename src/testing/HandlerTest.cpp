#include <webapi/testing/HandlerTest.h>

#include "testing/HandlerTestPrivate.h"
#include "util/read_file.h"

namespace ORBO {

HandlerTest::HandlerTest(const std::string& files)
    : private_(std::make_unique<HandlerTestPrivate>()) {
  private_->Install(files);
}

HandlerTest::~HandlerTest() = default;

HandlerTest& HandlerTest::User(const std::string& name) {
  Json::Value facts(Json::objectValue);
  facts["user"] = name;
  private_->LogIn(facts);
  return *this;
}

HandlerTest& HandlerTest::Administrator(const std::string& name) {
  Json::Value facts(Json::objectValue);
  facts["user"] = name;
  facts["administrator"] = true;
  private_->LogIn(facts);
  return *this;
}

HandlerTest& HandlerTest::Privilege(const std::string& name) {
  private_->GrantPrivilege(name);
  return *this;
}

HandlerTest& HandlerTest::Setting(const std::string& key, const std::string& value) {
  private_->Set(key, value);
  return *this;
}

HandlerTest& HandlerTest::WriteFile(const std::string& path, const std::string& content) {
  private_->Check(private_->tree.Write(path, content), "write " + path);
  return *this;
}

std::string HandlerTest::ReadFile(const std::string& path) const {
  std::string content;
  ReadWholeFile(Path(path), content);
  return content;
}

std::string HandlerTest::Path(const std::string& path) const {
  return private_->tree.Root() + path;
}

HandlerTest& HandlerTest::TimeLimit(int seconds) {
  private_->time_limit = seconds;
  return *this;
}

HandlerTest& HandlerTest::Param(const std::string& name, const Json::Value& value) {
  private_->call.params[name] = value;
  return *this;
}

HandlerTest& HandlerTest::File(const std::string& field, const std::string& name,
                               const std::string& content) {
  private_->call.files.push_back({field, name, content});
  return *this;
}

HandlerTest& HandlerTest::HttpMethod(const std::string& name) {
  private_->call.http_method = name;
  return *this;
}

HandlerTest& HandlerTest::Header(const std::string& name, const std::string& value) {
  return Variable(HeaderVariable(name), value);
}

HandlerTest& HandlerTest::Cookie(const std::string& name, const std::string& value) {
  private_->call.cookies[name] = value;
  return *this;
}

HandlerTest& HandlerTest::Variable(const std::string& name, const std::string& value) {
  private_->call.variables[name] = value;
  return *this;
}

HandlerTest& HandlerTest::SkipPermission() {
  private_->call.skip_permission = true;
  return *this;
}

HandlerTest& HandlerTest::Request(const std::string& json) {
  private_->ReadRequest(json);
  return *this;
}

HandlerAnswer HandlerTest::Call(const std::string& api, int version, const std::string& method) {
  private_->call.api = api;
  private_->call.version = version;
  private_->call.method = method;
  return private_->Serve();
}

bool HandlerTest::WaitForEnd(int seconds) { return private_->guard.WaitForEnd(seconds); }

}  // namespace ORBO
