// Background tasks: what a client sees of them, and what they keep of the request that
// has started them, which is nothing.

#include <json/reader.h>
#include <json/value.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "server_test.h"

namespace e2e {

namespace {

constexpr std::chrono::seconds kLimit(20);

bool HasEnded(pid_t pid) {
  const std::string stat = ReadFile("/proc/" + std::to_string(pid) + "/stat");
  return stat.empty() || stat.find(") Z ") != std::string::npos;
}

class Tasks : public ::testing::TestWithParam<ServerKind> {
 protected:
  void SetUp() override {
    fs::create_directories(path_ + "/etc/orbo");
    std::ofstream(path_ + "/etc/orbo/platform.conf")
        << (geteuid() == 0 ? "service_user=www-data\n" : "");
    for (const char* user : {"ben", "cleo"}) {
      const std::string command = "WEBAPI_ROOT=" + path_ + " " E2E_COMMAND " session open " + user +
                                  " --address 127.0.0.1 > " + path_ + "/" + user;
      ASSERT_EQ(0, std::system(command.c_str()));
    }
    server_.root().HandOver();
  }

  void TearDown() override {
    Go();
    EXPECT_TRUE(AllEnd());
  }

  Json::Value Call(const std::string& user, const std::string& api, const std::string& method,
                   const std::string& id) const {
    std::string sid = ReadFile(path_ + "/" + user);
    sid.pop_back();
    const HttpResponse response =
        server_.Get("api=" + api + "&version=1&method=" + method + "&task_id=" + Escape(id),
                    {"Cookie: id=" + sid});
    EXPECT_TRUE(response.closed && response.seconds < 10) << response.seconds;
    Json::Value body;
    std::istringstream(response.body) >> body;
    return body["success"].asBool() ? body["data"] : body["error"]["code"];
  }
  Json::Value Ask(const std::string& method, const std::string& id = "",
                  const std::string& user = "ben") const {
    return Call(user, "ORBO.Example.Checksum", method, id);
  }
  std::string Start() const {
    return Call("ben", "ORBO.Test.Permission", "work", "")["task_id"].asString();
  }
  std::string RecordOf(const std::string& id) const {
    return path_ + "/run/orbo/tasks/" + id + ".json";
  }
  void Go() const { std::ofstream(path_ + "/go"); }
  bool AllEnd() const {
    return WaitUntil([this] { return !server_.RunsPrograms(); }, kLimit);
  }

  const WebServer server_{GetParam()};
  const std::string path_ = server_.root().path();
};
E2E_UNDER_EVERY_SERVER(Tasks);

TEST_P(Tasks, LastLongerThanTheRequestAndTheServer) {
  const std::string id = Start();
  const std::string stopped = Start();
  const std::string deleted = Start();
  const Json::Value status = Ask("status", id);
  EXPECT_EQ("work", status["info"]["method"].asString());
  EXPECT_FALSE(status["finish"].asBool());
  EXPECT_EQ("waiting\n", Ask("log", id)["text"].asString());
  for (const auto& link :
       fs::directory_iterator("/proc/" + status["data"]["pid"].asString() + "/fd")) {
    const fs::path number = link.path().filename();
    const std::string target = fs::read_symlink(link).string();
    const bool is_stream = std::stoi(number) <= STDERR_FILENO;
    std::error_code none;
    // Whoever runs the tests may have left a descriptor open for all.
    EXPECT_TRUE(is_stream ? target == "/dev/null"
                          : target[0] == '/' ||
                                target == fs::read_symlink("/proc/self/fd" / number, none))
        << number << " " << target;
  }

  for (const char* method : {"status", "log", "stop"}) {
    EXPECT_EQ(1002, Ask(method, stopped, "cleo").asInt()) << method;
  }
  EXPECT_EQ(3U, Ask("list")["tasks"].size());
  EXPECT_EQ(0U, Ask("list", "", "cleo")["tasks"].size());
  fs::remove(RecordOf(deleted));
  EXPECT_EQ(1002, Ask("status", deleted).asInt());
  EXPECT_EQ(2U, Ask("list")["tasks"].size());
  const pid_t pid = Ask("status", stopped)["data"]["pid"].asInt();
  EXPECT_FALSE(HasEnded(pid)) << "by another user";
  EXPECT_TRUE(Ask("stop", stopped).isNull());
  EXPECT_TRUE(WaitUntil([pid] { return HasEnded(pid); }, kLimit));
  EXPECT_TRUE(Ask("status", stopped)["finish"].asBool());

  const pid_t server = std::stoi(ReadFile(server_.root().RunDirectory() + "/server.pid"));
  ASSERT_EQ(0, kill(server, SIGTERM));
  EXPECT_TRUE(WaitUntil([server] { return HasEnded(server); }, kLimit));
  EXPECT_FALSE(HasEnded(status["data"]["pid"].asInt()));
  Go();
  ASSERT_TRUE(AllEnd());
  EXPECT_NE(std::string::npos, ReadFile(RecordOf(id)).find("\"over\":true"));
  EXPECT_EQ(std::string::npos, ReadFile(RecordOf(stopped)).find("\"over\":true"));
  EXPECT_FALSE(fs::exists(RecordOf(deleted)));
}

}  // namespace

}  // namespace e2e
