// Files as answers, sent by the program or by the web server.

#include "server_test.h"

namespace e2e {

namespace {

class Downloads : public ServerTest {
 protected:
  Downloads() { fs::create_directories(File("")); }

  // In the directory that the servers may send from.
  static std::string File(const std::string& name) { return Path("/srv/files/" + name); }
  static std::string Written(const std::string& name, const std::string& content) {
    std::ofstream(File(name)) << content;
    return File(name);
  }
  static std::string Query(const std::string& path, const std::string& parameters = "") {
    return Probe("download", "path=" + Escape(path) + parameters);
  }
  // The peak memory of the programs that run, in KiB.
  static long PeakMemory() {
    long peak = 0;
    for (const std::string& program : server().Programs()) {
      const std::string status = ReadFile(program + "/status");
      const std::size_t at = status.find("VmHWM:");
      peak += at == std::string::npos ? 0 : std::atol(status.c_str() + at + 6);
    }
    return peak;
  }
};
class LargeDownloads : public Downloads {};
E2E_UNDER_EVERY_SERVER(Downloads);
E2E_UNDER_EVERY_SERVER(LargeDownloads);

TEST_P(Downloads, AnswerRangesAndConditionsWhoeverSendsTheContent) {
  const std::string all = "0123456789";
  const std::string path = Written("digits.csv", all);
  // A server takes a file of this second for one that may change yet.
  fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(1));
  for (const char* mode : {"", "&inline=1"}) {
    const HttpResponse plain = Fetch(Query(path, mode));
    const std::string etag = plain.Headers("ETag").at(0) + "\r\n";
    const std::tuple<const char*, std::string, int, std::string> rows[] = {
        {"GET", "", 200, all},
        {"HEAD", "", 200, ""},
        {"GET", "Range: bytes=-1\r\nIf-Range: " + etag, 206, "9"},
        {"GET", "Range: bytes=8-\r\nIf-Range: \"x\"\r\n", 200, all},
        {"GET", "Range: bytes=10-\r\n", 416, "the server's own"},
        {"GET", "If-None-Match: " + etag, 304, ""},
        {"GET", "If-Modified-Since: " + plain.Headers("Last-Modified").at(0) + "\r\n", 304, ""},
        {"GET", "If-Match: \"x\"\r\n", 412, ""},
    };
    for (const auto& [method, headers, status, body] : rows) {
      SCOPED_TRACE(mode + (" " + headers));
      const HttpResponse response = Fetch(Query(path, mode), headers, method);
      EXPECT_EQ(response.status, status);
      EXPECT_TRUE(response.body == body || status == 416) << response.body;
      EXPECT_EQ(response.Headers("X-Sendfile"), Lines{});
      if (status < 300) {
        EXPECT_EQ(response.Headers("Content-Type"), Lines{"text/csv"});
        EXPECT_EQ(response.Headers("Cache-Control"), Lines{"private, no-cache"});
        EXPECT_EQ(response.Headers("Content-Length"), Lines{status == 206 ? "1" : "10"});
      }
    }
  }
}

TEST_P(Downloads, GiveNamesAndPathsOfEveryKind) {
  for (const std::string name : {"n\xC3\xA4me.txt", "50%41.txt", "a b+c&d.txt", "end "}) {
    for (const char* mode : {"&name=", "&inline=1&name="}) {
      SCOPED_TRACE(name + mode);
      const HttpResponse response = Fetch(Query(Written(name, name), mode + Escape(name)));
      EXPECT_EQ(response.body, name);
      EXPECT_EQ(response.Headers("Content-Disposition").size(), 1U);
    }
  }
}

TEST_P(Downloads, LeaveRoomForAnError) {
  const HttpResponse missing = server().Get(Query(File("none.csv")));
  EXPECT_EQ(missing.Headers("Content-Type"), Lines{"application/json; charset=\"UTF-8\""});
  EXPECT_EQ(missing.body, "{\"error\":{\"code\":1000,\"errors\":-2},\"success\":false}\n");
  const HttpResponse closed =
      server().Get(Probe("closed", "path=" + Escape(Written("digits.csv", "0123456789"))));
  EXPECT_EQ(closed.body, "{\"error\":{\"code\":1000,\"errors\":-1},\"success\":false}\n");
  // The server sends from its one directory alone.
  const HttpResponse outside = Fetch(Query(server().root().WebAPIDirectory() + "/../outside.lib"));
  EXPECT_GE(outside.status, 400);
  EXPECT_EQ(outside.body.find("authLevel"), std::string::npos);
}

TEST_P(Downloads, EndWithTheirClientAndWithTheirFile) {
  constexpr std::uint64_t kSize = std::uint64_t{64} << 20;
  const std::string path = Written("hole", "");
  fs::resize_file(path, kSize);
  const HttpResponse left =
      Fetch(Query(path, "&inline=1"), "", "GET", [](std::string&) { return false; });
  EXPECT_EQ(left.status, 200);
  EXPECT_TRUE(WaitUntil([] { return !server().RunsPrograms(); }, std::chrono::seconds(30)));

  const HttpResponse shorter = Fetch(Query(path, "&inline=1"), "", "GET", [&path](std::string&) {
    fs::resize_file(path, 1000);
    return true;
  });
  EXPECT_EQ(shorter.Headers("Content-Length"), Lines{std::to_string(kSize)});
  EXPECT_LT(shorter.body.size(), kSize);
  EXPECT_TRUE(shorter.closed);
}

TEST_P(LargeDownloads, NeedNoMemory) {
  constexpr std::uint64_t kSize = (std::uint64_t{4} << 30) + 1;
  const std::string path = Written("large", "");
  fs::resize_file(path, kSize);
  for (const char* mode : {"", "&inline=1"}) {
    EXPECT_EQ(Fetch(Query(path, mode), "Range: bytes=4294967295-\r\n").Headers("Content-Range"),
              Lines{"bytes 4294967295-4294967296/4294967297"});
  }
  std::uint64_t taken = 0;
  long peak = 0;
  const HttpResponse response =
      Fetch(Query(path, "&inline=1"), "", "GET", [&](std::string& received) {
        const std::size_t head_end = received.find("\r\n\r\n");
        if (head_end != std::string::npos) {
          taken += received.size() - head_end - 4;
          received.resize(head_end + 4);
        }
        peak = peak == 0 && taken > kSize / 2 ? PeakMemory() : peak;
        return true;
      });
  EXPECT_EQ(response.Headers("Content-Length"), Lines{std::to_string(kSize)});
  EXPECT_EQ(taken, kSize);
  EXPECT_GT(peak, 0) << "the program still runs then";
  EXPECT_LT(peak, 16 * 1024);
  std::printf("%.1f s, the program at most %ld KiB\n", response.seconds, peak);
}

}  // namespace

}  // namespace e2e
