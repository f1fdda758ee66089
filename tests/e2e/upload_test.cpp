// Uploads, read by the entry and by handlers, and what is left of them: nothing.

#include <sys/socket.h>

#include <algorithm>

#include "server_test.h"

namespace e2e {

namespace {

std::string File(const std::string& name, const std::string& file, const std::string& content) {
  return Part("name=" + name + "; filename=\"" + file + "\"", content);
}
const char kEnd[] = "--b--\r\n";

std::string UploadError(int code) {
  return "{\"error\":{\"code\":108,\"errors\":{\"upload_err\":" + std::to_string(code) +
         "}},\"success\":false}\n";
}

class Uploads : public ServerTest {
 protected:
  void SetUp() override {
    fs::create_directories(Path("/volume"));
    Configure("volumes=/none /volume\n");
  }
  void TearDown() override {
    EXPECT_TRUE(WaitUntil([this] { return !server().RunsPrograms(); }, std::chrono::seconds(10)));
    EXPECT_EQ(Stored(), 0);
    fs::remove(Path("/etc/orbo/platform.conf"));
  }

  long Stored() const {
    std::error_code none;
    return std::distance(fs::directory_iterator(Path("/volume/@tmp"), none), {});
  }
  HttpResponse Send(const std::string& query, const std::string& body) const {
    return server().Send("POST", "/webapi/entry.cgi?" + query, {kFormType}, body);
  }
  // Sends the head of a request with a body of `size` bytes.
  int Begin(const std::string& method, std::uint64_t size) const {
    const std::string head =
        "POST /webapi/entry.cgi?" + Probe(method) + " HTTP/1.0\r\nHost: " + server().Host() +
        "\r\nContent-Length: " + std::to_string(size) + "\r\n" + kFormType + "\r\n\r\n";
    const int connection = server().Connect();
    EXPECT_EQ(send(connection, head.data(), head.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(head.size()));
    return connection;
  }
};
E2E_UNDER_EVERY_SERVER(Uploads);

TEST_P(Uploads, ReachTheHandlerAsParameters) {
  const std::string names = Field("method", "upload") + Field("api", "ORBO.Test.Probe") +
                            Field("first", "1") + Field("version", "1");
  const std::string call = R"("call":"ORBO.Test.Probe.upload",)";
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {Probe("upload"), Field("a", "1") + File("f", "/x/y", "content") + Field("b", "") + kEnd,
       Success(R"({"a":"1","api":"ORBO.Test.Probe","b":"",)" + call +
               R"("f":"file content","f.name":"y","method":"upload","version":"1"})")},
      // The names of the call come in front of the file; later ones are mere parameters.
      {"", names + File("f", "", "c") + Field("api", "ORBO.Test.Closed") + Field("x", "2") + kEnd,
       Success(R"({"api":"ORBO.Test.Closed",)" + call +
               R"("f":"file c","f.name":"","first":"1","method":"upload","version":"1","x":"2"})")},
      {Probe("upload"), File("f", "x", "") + Field("method", "echo") + kEnd,
       Success(R"({"api":"ORBO.Test.Probe",)" + call +
               R"("f":"file ","f.name":"x","method":"echo","version":"1"})")},
      {"", File("f", "x", "c") + names + kEnd, Failure(101)},
      {"", names + "--b", Failure(101)},
      {Probe("echo"), File("f", "x", "c") + kEnd, Failure(115)},
      {"api=ORBO.Entry.Request&version=1&method=request", Field("compound", "[]") + kEnd,
       Failure(115)},
      {Probe("upload"), "", UploadError(-6)},
      {Probe("upload"), File("f", "x", std::string(300000, 'x')), UploadError(-1)},
      {"", names + File("f", "x", "c"), UploadError(-1)},
  };
  for (const auto& [query, body, expected] : rows) {
    SCOPED_TRACE(query + " " + body.substr(0, 500));
    const HttpResponse response = Send(query, body);
    EXPECT_EQ(response.body, expected);
    // Browsers show the answer to an upload form, and may offer JSON for saving.
    EXPECT_EQ(response.Headers("Content-type"),
              std::vector<std::string>{"text/html; charset=\"UTF-8\""});
  }
}

TEST_P(Uploads, CanBeReadByTheHandler) {
  const std::string body = Field("a", "1") + File("f", "x", "one") + Field("b", "2") +
                           File("f", "y", "two") + Field("f", "3") + kEnd;
  const std::string all =
      R"("f":"file one","f.2":"file two","f.2.name":"y","f.name":"x","result":)";
  const std::string steps =
      R"(,"steps":[{"a":"1","f":"x"},{"a":"1","b":"2","f":"file one","f.name":"x"},)"
      R"({"a":"1","b":"2",)" +
      all.substr(0, all.rfind(",\"result")) + "}]";
  EXPECT_EQ(Send(Probe("deferred"), body).body,
            Success(R"({"a":"1","b":"2",)" + all + "-8" + steps + "}"));
  EXPECT_EQ(Send(Probe("deferred", "all=yes"), body).body,
            Success(R"({"a":"1","b":"2",)" + all + "1,\"steps\":[]}"));
  // What was read to know the call is not read again.
  EXPECT_EQ(Send("", Field("api", "ORBO.Test.Probe") + Field("version", "1") +
                         Field("method", "deferred") + Field("all", "yes") + body)
                .body,
            Success(R"({"b":"2",)" + all + "1,\"steps\":[]}"));
  EXPECT_EQ(Send(Probe("deferred"), File("f", "x", "") + kEnd).body,
            Success(R"({"f":"x","result":-6,"steps":[{"f":"x"}]})"));
  EXPECT_EQ(Send(Probe("deferred"), File("f", "x", std::string(100000, 'x'))).body,
            Success(R"({"f":"x","result":-1,"steps":[{"f":"x"}]})"));
  EXPECT_EQ(Send(Probe("deferred", "interrupt=yes"), body).body,
            Success(R"({"result":-13,"steps":[-9]})"));
}

TEST_P(Uploads, LeaveNothingBehind) {
  const std::string file = File("f", "x", std::string(300000, 'x'));
  EXPECT_NE(Send(Probe("upload", "crash=yes"), file + kEnd).status, 200);
  EXPECT_NE(Send(Probe("upload", "crash=killed"), file + kEnd).status, 200);
  EXPECT_EQ(Stored(), 1);
  // Nobody but a later upload can remove it; the answer may have come while the program
  // still went down.
  EXPECT_TRUE(
      WaitUntil([this] { return Send(Probe("upload"), kEnd).status == 200 && Stored() == 0; },
                std::chrono::seconds(10)));
  const int connection = Begin("upload", 9000000);
  send(connection, file.data(), file.size(), MSG_NOSIGNAL);
  EXPECT_TRUE(WaitUntil([this] { return Stored() == 1; }, std::chrono::seconds(10)));
  close(connection);
}

// By itself (label "large"): each server takes some seconds and 4 GiB of the disk.
class LargeUploads : public Uploads {};
E2E_UNDER_EVERY_SERVER(LargeUploads);

TEST_P(LargeUploads, OfMoreThan4GiBNeedLittleMemory) {
  constexpr std::uint64_t kSize = (std::uint64_t{4} << 30) + 1;
  ASSERT_GT(fs::space(Path("/volume")).available, kSize + (std::uint64_t{1} << 30))
      << "this test needs 5 GiB of free space in " << Path("/volume");
  const std::string head = "--b\r\nContent-Disposition: form-data; name=file; filename=x\r\n\r\n";
  const std::string end = std::string("\r\n") + kEnd;
  const std::string block(1 << 20, '\r');
  const int connection = Begin("large", head.size() + kSize + end.size());
  send(connection, head.data(), head.size(), MSG_NOSIGNAL);
  for (std::uint64_t left = kSize; left > 0;) {
    const ssize_t sent =
        send(connection, block.data(),
             static_cast<std::size_t>(std::min<std::uint64_t>(left, block.size())), MSG_NOSIGNAL);
    ASSERT_GT(sent, 0);
    left -= static_cast<std::uint64_t>(sent);
  }
  send(connection, end.data(), end.size(), MSG_NOSIGNAL);
  std::string answer;
  char buffer[4096];
  for (ssize_t count; (count = recv(connection, buffer, sizeof buffer, 0)) > 0;) {
    answer.append(buffer, static_cast<std::size_t>(count));
  }
  close(connection);
  EXPECT_EQ(answer.substr(std::min(answer.size(), answer.find("\r\n\r\n") + 4)),
            Success(R"({"size":4294967297,"small":true,"stored":true})"));
}

}  // namespace

}  // namespace e2e
