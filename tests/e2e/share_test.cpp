// The shared files of the example: what names clients can give, how files come back,
// and who is kept out.

#include <json/reader.h>
#include <json/value.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <sstream>

#include "server_test.h"

namespace e2e {

namespace {

class Share : public ServerTest {
 protected:
  void SetUp() override {
    Configure("");
    cookie_ = "Cookie: id=" + Run("session open ben");
  }
  void TearDown() override {
    fs::remove_all(Path("/var/lib/orbo"));
    fs::remove(Path("/etc/orbo/platform.conf"));
  }

  static std::string Kept(const std::string& name) { return Path("/var/lib/orbo/share/" + name); }
  static std::string Query(const std::string& method, const std::string& name) {
    return "api=ORBO.Example.Share&version=1&method=" + method +
           "&name=" + Escape('"' + name + '"');
  }
  HttpResponse Call(const std::string& http_method, const std::string& method,
                    const std::string& name, const std::string& header = "X: y",
                    const std::string& body = "x=y") const {
    return server().Send(http_method, "/webapi/entry.cgi?" + Query(method, name), {cookie_, header},
                         body);
  }
  // Uploads a file of each name, with that name as its content, in one form.
  Lines Upload(const Lines& names) const {
    std::string body;
    for (const std::string& name : names) {
      body += "--b\r\nContent-Disposition: form-data; name=f; filename=\"" + name + "\"\r\n\r\n" +
              name + "\r\n";
    }
    return NamesIn(Call("POST", "upload", "", "Content-Type: multipart/form-data; boundary=b",
                        body + "--b--\r\n"));
  }
  static Lines NamesIn(const HttpResponse& response) {
    Json::Value answer;
    std::istringstream(response.body) >> answer;
    EXPECT_TRUE(answer["success"].asBool()) << response.body;
    Lines names;
    for (const Json::Value& file : answer["data"]["files"]) {
      names.push_back(file["name"].asString());
      EXPECT_EQ(file["size"].asUInt64(), fs::file_size(Kept(names.back())));
    }
    return names;
  }

  std::string cookie_;
};
E2E_UNDER_EVERY_SERVER(Share);

TEST_P(Share, KeepsFilesUnderSafeNames) {
  std::string umlauts;
  for (int i = 0; i < 150; ++i) {
    umlauts += "\xC3\xA4";
  }
  const std::pair<std::string, std::string> rows[] = {
      {"../../etc/passwd", "passwd"},
      {"/x/y\\..z .txt ", "z .txt"},
      {"...", "file"},
      {"a\xC2\x85\xC2\xA0", "a__\xC2\xA0"},
      {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {umlauts + ".txt", umlauts.substr(0, 250) + ".txt"},
      {umlauts + ".txt", umlauts.substr(0, 246) + " (2).txt"},
      {"100%<b>", "100%<b>"},
  };
  Lines all;
  for (const auto& [sent, kept] : rows) {
    EXPECT_EQ(Upload({sent}), Lines{kept});
    EXPECT_EQ(ReadFile(Kept(kept)), sent);
    EXPECT_EQ(Call("GET", "download", kept).body, sent);
    all.push_back(kept);
  }
  EXPECT_EQ(Upload({"n.txt", "n.txt", "n"}), (Lines{"n.txt", "n (2).txt", "n"}));
  all.insert(all.end(), {"n.txt", "n (2).txt", "n"});
  std::sort(all.begin(), all.end());
  EXPECT_EQ(NamesIn(Call("GET", "list", "")), all);
  EXPECT_EQ(fs::status(Kept("")).permissions(), fs::perms::owner_all);
}

TEST_P(Share, GivesPartsAndRemoves) {
  Upload({"digits 0123456789.txt"});
  const HttpResponse part =
      Fetch(Query("download", "digits 0123456789.txt"), cookie_ + "\r\nRange: bytes=9-\r\n");
  EXPECT_EQ(part.status, 206);
  EXPECT_EQ(part.body, "23456789.txt");
  EXPECT_EQ(part.Headers("Content-Disposition"),
            Lines{"attachment; filename=\"digits 0123456789.txt\""});
  EXPECT_EQ(Call("GET", "remove", "digits 0123456789.txt").status, 405);
  EXPECT_EQ(Call("POST", "remove", "digits 0123456789.txt").body, "{\"success\":true}\n");
  EXPECT_EQ(Call("POST", "remove", "digits 0123456789.txt").body, Failure(1002));
  EXPECT_EQ(NamesIn(Call("GET", "list", "")), Lines{});
}

TEST_P(Share, CopiesFromAnotherFileSystem) {
  std::string volume = "/dev/shm/webapi-e2e-XXXXXX";
  ASSERT_NE(mkdtemp(volume.data()), nullptr);
  fs::permissions(volume, fs::perms::all);
  fs::create_directory_symlink(volume, Path("/volume"));
  Configure("volumes=/volume\n");
  EXPECT_EQ(Upload({"a", "a"}), (Lines{"a", "a (2)"}));
  EXPECT_EQ(ReadFile(Kept("a (2)")), "a");
  EXPECT_TRUE(fs::exists(volume + "/@tmp"));
  fs::remove(Path("/volume"));
  fs::remove_all(volume);
}

TEST_P(Share, HandsOutNothingElse) {
  const std::string outside = Path("/outside");
  std::ofstream(outside) << "secret";
  NamesIn(Call("GET", "list", ""));  // makes the directory
  fs::create_symlink(outside, Kept("link"));
  fs::create_directory(Kept("directory"));
  ASSERT_EQ(mkfifo(Kept("pipe").c_str(), 0600), 0);
  std::ofstream(Kept(".hidden")) << "x";
  for (const char* name :
       {"\xFF", "\xED\xA0\x80", "\xC3", "\xC0\x80", "\x01", "\x7F", "x ", "a\\b"}) {
    std::ofstream(Kept(name)) << "x";
  }
  server().root().HandOver();
  EXPECT_EQ(NamesIn(Call("GET", "list", "")), Lines{});
  for (const char* name : {"link", "directory", "pipe", ".hidden",
                           "directory/../../../../../outside", ".", "x", "link\\u0000"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Call("GET", "download", name).body, Failure(1002));
    EXPECT_EQ(Call("POST", "remove", name).body, Failure(1002));
  }
  EXPECT_TRUE(fs::is_symlink(Kept("link")) && fs::exists(Kept(".hidden")) && fs::exists(outside));
  EXPECT_EQ(Upload({"link"}), Lines{"link (2)"});
  EXPECT_EQ(ReadFile(outside), "secret");

  fs::remove_all(Kept(""));
  fs::create_directory_symlink(Path("/run"), Path("/var/lib/orbo/share"));
  EXPECT_EQ(Call("GET", "list", "").body, Failure(1005));
  cookie_ = "X: y";
  for (const char* method : {"list", "upload", "download", "remove"}) {
    EXPECT_EQ(Call("POST", method, "x").body, Failure(119)) << method;
  }
}

TEST_P(Share, HasAPageAndTheClientAndNothingBesideThem) {
  const HttpResponse page = server().Send("GET", "/webapi/share.html");
  EXPECT_EQ(page.status, 200);
  EXPECT_EQ(page.Headers("Content-Type"), Lines{"text/html; charset=utf-8"});
  EXPECT_EQ(page.Headers("X-Frame-Options"), Lines{"DENY"});
  EXPECT_EQ(server().Send("GET", "/webapi/webapi.mjs").Headers("Content-Type"),
            Lines{"text/javascript; charset=utf-8"});
  for (const char* path : {"share.html/x", "share.htm", "xshare.html", "x/share.html", "lib.def"}) {
    EXPECT_EQ(server().Send("GET", std::string("/webapi/") + path).status, 403) << path;
  }
}

}  // namespace

}  // namespace e2e
