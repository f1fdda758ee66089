// Files as answers, sent by the program or by the web server.

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "server_test.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

class Downloads : public ServerTest {
 protected:
  Downloads() { fs::create_directories(Path("")); }

  // In the directory that the servers may send from.
  static std::string Path(const std::string& name) {
    return server().root().path() + "/srv/files/" + name;
  }
  static void Write(const std::string& name, const std::string& content) {
    std::ofstream(Path(name)) << content;
  }
  static HttpResponse Fetch(const std::string& path, const std::string& parameters,
                            const std::string& headers = "", const std::string& method = "GET",
                            const Watch& watch = nullptr) {
    return server().SendRaw(method + " /webapi/entry.cgi?" +
                                Probe("download", "path=" + Escape(path) + parameters) +
                                " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n" + headers + "\r\n",
                            AfterRequest::kListen, watch);
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
  Write("digits.csv", "0123456789");
  // A server takes a file of this second for one that may change yet.
  fs::last_write_time(Path("digits.csv"), fs::file_time_type::clock::now() - std::chrono::hours(1));
  for (const char* mode : {"", "&inline=1"}) {
    const HttpResponse plain = Fetch(Path("digits.csv"), mode);
    const std::string etag = plain.Headers("ETag").at(0) + "\r\n";
    const std::string date = plain.Headers("Last-Modified").at(0) + "\r\n";
    const struct {
      const char* method;
      std::string headers;
      int status;
      const char* body;
    } rows[] = {
        {"GET", "", 200, "0123456789"},
        {"HEAD", "", 200, ""},
        {"GET", "Range: bytes=-1\r\nIf-Range: " + etag, 206, "9"},
        {"GET", "Range: bytes=8-\r\nIf-Range: \"x\"\r\n", 200, "0123456789"},
        {"GET", "Range: bytes=10-\r\n", 416, nullptr},
        {"GET", "If-None-Match: " + etag, 304, ""},
        {"GET", "If-Modified-Since: " + date, 304, ""},
        {"GET", "If-Match: \"x\"\r\n", 412, ""},
    };
    for (const auto& row : rows) {
      SCOPED_TRACE(mode + (" " + row.headers));
      const HttpResponse response = Fetch(Path("digits.csv"), mode, row.headers, row.method);
      EXPECT_EQ(response.status, row.status);
      EXPECT_EQ(response.Headers("X-Sendfile"), Lines{});
      if (row.body != nullptr) {
        EXPECT_EQ(response.body, row.body);
      }
      if (row.status < 300) {
        EXPECT_EQ(response.Headers("Content-Type"), Lines{"text/csv"});
        EXPECT_EQ(response.Headers("Cache-Control"), Lines{"private, no-cache"});
        EXPECT_EQ(response.Headers("Content-Length"),
                  Lines{row.status == 206 ? std::to_string(response.body.size()) : "10"});
      }
    }
  }
}

TEST_P(Downloads, GiveNamesAndPathsOfEveryKind) {
  for (const std::string name : {"n\xC3\xA4me.txt", "50%41.txt", "a b+c&d.txt", "end "}) {
    Write(name, name);
    for (const char* mode : {"&name=", "&inline=1&name="}) {
      SCOPED_TRACE(name + mode);
      const HttpResponse response = Fetch(Path(name), mode + Escape(name));
      EXPECT_EQ(response.body, name);
      EXPECT_EQ(response.Headers("Content-Disposition").size(), 1U);
    }
  }
}

TEST_P(Downloads, LeaveRoomForAnError) {
  const HttpResponse missing = server().Get(Probe("download", "path=" + Escape(Path("none.csv"))));
  EXPECT_EQ(missing.Headers("Content-Type"), Lines{"application/json; charset=\"UTF-8\""});
  EXPECT_EQ(missing.body, "{\"error\":{\"code\":1000,\"errors\":-2},\"success\":false}\n");
  Write("digits.csv", "0123456789");
  const HttpResponse closed = server().Get(Probe("closed", "path=" + Escape(Path("digits.csv"))));
  EXPECT_EQ(closed.body, "{\"error\":{\"code\":1000,\"errors\":-1},\"success\":false}\n");
  // The server sends from its one directory alone.
  const HttpResponse outside = Fetch(server().root().WebAPIDirectory() + "/../outside.lib", "");
  EXPECT_GE(outside.status, 400);
  EXPECT_EQ(outside.body.find("authLevel"), std::string::npos);
}

TEST_P(Downloads, EndWithTheirClientAndWithTheirFile) {
  constexpr std::uint64_t kSize = std::uint64_t{64} << 20;
  Write("hole", "");
  fs::resize_file(Path("hole"), kSize);
  const HttpResponse left =
      Fetch(Path("hole"), "&inline=1", "", "GET", [](std::string&) { return false; });
  EXPECT_EQ(left.status, 200);
  EXPECT_TRUE(WaitUntil([] { return !server().RunsPrograms(); }, std::chrono::seconds(30)));

  const HttpResponse shorter = Fetch(Path("hole"), "&inline=1", "", "GET", [](std::string&) {
    fs::resize_file(Path("hole"), 1000);
    return true;
  });
  EXPECT_EQ(shorter.Headers("Content-Length"), Lines{std::to_string(kSize)});
  EXPECT_LT(shorter.body.size(), kSize);
  EXPECT_TRUE(shorter.closed);
}

TEST_P(LargeDownloads, NeedNoMemory) {
  constexpr std::uint64_t kSize = (std::uint64_t{4} << 30) + 1;
  Write("large", "");
  fs::resize_file(Path("large"), kSize);
  for (const char* mode : {"", "&inline=1"}) {
    EXPECT_EQ(Fetch(Path("large"), mode, "Range: bytes=4294967295-\r\n").Headers("Content-Range"),
              Lines{"bytes 4294967295-4294967296/4294967297"});
  }
  std::uint64_t taken = 0;
  long peak = 0;
  const HttpResponse response =
      Fetch(Path("large"), "&inline=1", "", "GET", [&](std::string& received) {
        const std::size_t head_end = received.find("\r\n\r\n");
        if (head_end != std::string::npos) {
          taken += received.size() - head_end - 4;
          received.resize(head_end + 4);
        }
        if (peak == 0 && taken > kSize / 2) {
          peak = PeakMemory();
        }
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
