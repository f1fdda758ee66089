// What names clients can give, how files come back, and who is kept out.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <webapi/testing/HandlerTest.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;
using ORBO::HandlerAnswer;

constexpr char kAPI[] = "ORBO.Example.Share";

class Share : public ::testing::Test {
 protected:
  Share() { test_.User("ben"); }

  static std::string Kept(const std::string& name) { return "/var/lib/orbo/share/" + name; }
  HandlerAnswer Call(const std::string& http_method, const std::string& method,
                     const std::string& name) {
    return test_.HttpMethod(http_method).Param("name", name).Call(kAPI, 1, method);
  }
  // Uploads a file of each name, with that name as its content, in one form.
  Names Upload(const Names& names) {
    for (const std::string& name : names) {
      test_.File("f", name, name);
    }
    return NamesIn(test_.Call(kAPI, 1, "upload"));
  }
  Names List() { return NamesIn(test_.Call(kAPI, 1, "list")); }
  Names NamesIn(const HandlerAnswer& answer) {
    EXPECT_TRUE(answer.Success()) << answer.Text();
    Names names;
    for (const Json::Value& file : answer.Data()["files"]) {
      names.push_back(file["name"].asString());
      EXPECT_EQ(file["size"].asUInt64(), test_.ReadFile(Kept(names.back())).size());
    }
    return names;
  }

  ORBO::HandlerTest test_{WEBAPI_HANDLER_FILES};
};

std::string Umlauts(int bytes) {
  std::string text;
  for (; bytes > 0; bytes -= 2) {
    text += "\xC3\xA4";
  }
  return text;
}

const std::pair<std::string, std::string> kSentAndKept[] = {
    {"../../etc/passwd", "passwd"},
    {"/x/y\\..z .txt ", "z .txt"},
    {"...", "file"},
    {"a\xC2\x85\xC2\xA0", "a__\xC2\xA0"},
    {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
    {Umlauts(300) + ".txt", Umlauts(250) + ".txt"},
    {Umlauts(300) + ".txt", Umlauts(246) + " (2).txt"},
    {"100%<b>", "100%<b>"},
};

TEST_F(Share, KeepsFilesUnderSafeNames) {
  for (const auto& [sent, kept] : kSentAndKept) {
    EXPECT_EQ(Upload({sent}), Names{kept});
    EXPECT_EQ(test_.ReadFile(Kept(kept)), sent);
    EXPECT_EQ(Call("GET", "download", kept).Content(), sent);
  }
  EXPECT_EQ(List().size(), std::size(kSentAndKept));
  EXPECT_EQ(fs::status(test_.Path(Kept(""))).permissions(), fs::perms::owner_all);
}

TEST_F(Share, NumbersNamesThatAreTaken) {
  EXPECT_EQ(Upload({"n.txt", "n.txt", "n"}), (Names{"n.txt", "n (2).txt", "n"}));
  EXPECT_EQ(List(), (Names{"n", "n (2).txt", "n.txt"}));
}

TEST_F(Share, GivesPartsAndRemoves) {
  Upload({"digits 0123456789.txt"});
  const HandlerAnswer part = test_.Header("Range", "bytes=9-")
                                 .Param("name", "digits 0123456789.txt")
                                 .Call(kAPI, 1, "download");
  EXPECT_EQ(part.Status(), 206);
  EXPECT_EQ(part.Content(), "23456789.txt");
  EXPECT_EQ(part.Header("Content-Disposition"), "attachment; filename=\"digits 0123456789.txt\"");
  EXPECT_EQ(Call("GET", "remove", "digits 0123456789.txt").Status(), 405);
  EXPECT_TRUE(Call("POST", "remove", "digits 0123456789.txt").Success());
  EXPECT_EQ(Call("POST", "remove", "digits 0123456789.txt").Code(), 1002);
  EXPECT_EQ(List(), Names{});
}

TEST_F(Share, CopiesFromAnotherFileSystem) {
  std::string volume = "/dev/shm/webapi-test-XXXXXX";
  ASSERT_NE(mkdtemp(volume.data()), nullptr);
  fs::create_directory_symlink(volume, test_.Path("/volume"));
  test_.Setting("volumes", "/volume");
  EXPECT_EQ(Upload({"a", "a"}), (Names{"a", "a (2)"}));
  EXPECT_EQ(test_.ReadFile(Kept("a (2)")), "a");
  EXPECT_TRUE(fs::exists(volume + "/@tmp"));
  fs::remove_all(volume);
}

TEST_F(Share, ListsPlainFilesWithSafeNamesOnly) {
  List();  // makes the directory
  for (const char* name : {"directory/x", ".hidden", "\xFF", "\xED\xA0\x80", "\xC3", "\xC0\x80",
                           "\x01", "\x7F", "x ", "a\\b"}) {
    test_.WriteFile(Kept(name), "x");
  }
  ASSERT_EQ(mkfifo(test_.Path(Kept("pipe")).c_str(), 0600), 0);
  EXPECT_EQ(List(), Names{});
  for (const char* name : {"directory", "pipe", ".hidden", ".", "x"}) {
    EXPECT_EQ(Call("GET", "download", name).Code(), 1002) << name;
    EXPECT_EQ(Call("POST", "remove", name).Code(), 1002) << name;
  }
  EXPECT_EQ(test_.ReadFile(Kept(".hidden")), "x");
}

TEST_F(Share, FollowsNoLink) {
  List();
  test_.WriteFile("/outside", "secret");
  fs::create_symlink(test_.Path("/outside"), test_.Path(Kept("link")));
  for (const std::string& name :
       {std::string("link"), std::string("link\0", 5), std::string("../../../../outside")}) {
    EXPECT_EQ(Call("GET", "download", name).Code(), 1002) << name;
    EXPECT_EQ(Call("POST", "remove", name).Code(), 1002) << name;
  }
  EXPECT_EQ(Upload({"link"}), Names{"link (2)"});
  EXPECT_EQ(test_.ReadFile("/outside") + test_.ReadFile(Kept("link")), "secretsecret");
}

TEST_F(Share, NeedsADirectoryOfItsOwnAndAUser) {
  test_.WriteFile("/var/lib/orbo/x", "");
  fs::create_directory_symlink(test_.Path("/run"), test_.Path("/var/lib/orbo/share"));
  EXPECT_EQ(test_.Call(kAPI, 1, "list").Code(), 1005);
  test_.User("");
  for (const char* method : {"list", "upload", "download", "remove"}) {
    EXPECT_EQ(Call("GET", method, "x").Code(), 119) << method;
  }
}

}  // namespace
