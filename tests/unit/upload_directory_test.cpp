#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <webapi/APIRequest.h>

#include <filesystem>
#include <fstream>
#include <tuple>

#include "platform/last_error.h"
#include "platform/linux/abandoned_files.h"
#include "transfer/APIUploadPrivate.h"
#include "unit/WebAPIDirectory.h"
#include "unit/json.h"
#include "util/paths.h"

namespace {

// The blocks of 4096 bytes that are free below the three places; none: the real ones.
struct Blocks {
  fsblkcnt_t volume, tmp, root;
};
const Blocks* g_blocks = nullptr;

}  // namespace

// Takes the place of the C library's for this whole program.
int statvfs(const char* path, struct statvfs* status) {
  static const auto real =
      reinterpret_cast<int (*)(const char*, struct statvfs*)>(dlsym(RTLD_NEXT, "statvfs64"));
  if (g_blocks == nullptr) {
    return real(path, status);
  }
  *status = {};
  status->f_frsize = 4096;
  if (path == ORBO::RootedPath("/volume/")) {
    status->f_bavail = g_blocks->volume;
  } else {
    status->f_bfree = path == ORBO::RootedPath("/tmp") ? g_blocks->tmp : g_blocks->root;
  }
  return 0;
}

namespace ORBO {
namespace {

namespace fs = std::filesystem;

// The outcome with so much room, "" for none.
std::string Find(const Blocks& blocks, unsigned long long size) {
  std::string found;
  g_blocks = &blocks;
  const bool is_found = APIUploadPrivate::FindUploadTmpDir(found, size);
  g_blocks = nullptr;
  EXPECT_NE(is_found, found.empty());
  return found.substr(found.empty() ? 0 : RootedPath("").size());
}

TEST(UploadDirectory, IsTheFirstPlaceWithRoomAsTheSystemCountsIt) {
  const fsblkcnt_t gib = 1 << 18;
  const fsblkcnt_t reserve = 51200;  // of the root file system
  const unsigned long long block = 4096;
  const unsigned long long word = block * 4 * gib;
  const std::tuple<const char*, bool, Blocks, unsigned long long, std::string> rows[] = {
      {"volume", false, {9, 9, 0}, 9 * block, "/volume/@tmp"},
      {"large volume", false, {9 * gib, 0, 0}, word + 1, "/volume/@tmp"},
      {"volume too small", false, {9, 10, 0}, 9 * block + 1, "/tmp"},
      {"volumes not used", true, {9, 9, 0}, 9 * block, "/tmp"},
      {"tmp too small", true, {9, 9, reserve + 10}, 9 * block + 1, "/var/@tmp"},
      {"root too small", true, {9, 9, reserve + 9}, 9 * block + 1, ""},
      {"tmp counted from 4 GiB", true, {0, 4 * gib + 1, 0}, block, "/tmp"},
      {"both counted from 4 GiB", true, {0, 4 * gib, 4 * gib + reserve}, 1, ""},
      {"most that tmp takes", true, {0, 4 * gib - 1, 0}, word - block, "/tmp"},
      {"4 GiB", true, {0, 9 * gib - 1, 9 * gib - 1}, word, ""},
      {"most in root", true, {0, 0, 4 * gib - 1}, word - block * (reserve + 1), "/var/@tmp"},
      {"beyond root", true, {0, 0, 4 * gib - 1}, word - block * reserve, ""},
      {"anything", true, {0, 9, 9}, ~0ULL, ""},
  };
  for (const auto& [name, is_tinnox, blocks, size, expected] : rows) {
    SCOPED_TRACE(name);
    const WebAPIDirectory directory;
    directory.Configure("volumes=/volume/\n");
    fs::create_directories(RootedPath("/etc.defaults"));
    std::ofstream(RootedPath("/etc.defaults/orboinfo.conf")) << (is_tinnox ? "tinnox=yes" : "");
    QLIBCErrSet(0);
    const mode_t mask = umask(0);
    EXPECT_EQ(expected, Find(blocks, size));
    umask(mask);
    EXPECT_EQ(expected != "/volume/@tmp" && expected != "/tmp", QLIBCErrGet() == 10496);
    const int mode = expected == "/var/@tmp" ? 0700 : 0777;
    EXPECT_TRUE(expected.empty() || expected == "/tmp" ||
                fs::status(RootedPath(expected)).permissions() == fs::perms(mode));
  }
}

// Without a content type nothing is read where there is room.
TEST(UploadDirectory, IsSoughtForTheWholeBodyAndSomeMore) {
  const WebAPIDirectory directory;
  const std::tuple<const char*, fsblkcnt_t, int> rows[] = {
      {"{}", 9999, -6},
      {R"({"CONTENT_LENGTH":"0"})", 9999, -6},
      {R"({"CONTENT_LENGTH":"4096"})", 1281, -5},
      {R"({"CONTENT_LENGTH":"4097"})", 1281, -2},
  };
  for (const auto& [environment, blocks, result] : rows) {
    APIRequest request(FromText(R"({"environ":)" + std::string(environment) + "}"));
    Json::Value params;
    const Blocks room{0, blocks, 0};
    g_blocks = &room;
    EXPECT_EQ(result, APIUpload(&request).GetUploadAll(params, nullptr)) << environment;
    g_blocks = nullptr;
  }
}

TEST(UploadDirectory, IsRidOfWhatKilledProcessesLeft) {
  const WebAPIDirectory directory;
  directory.Configure("volumes=/volume\n");
  const std::string mine = TemporaryFileName();
  // That name with another process, start, system or container in it.
  const auto with = [&mine](int place, const char* number) {
    std::size_t begin = mine.find('-') + 1;
    while (place-- > 0) {
      begin = mine.find('-', begin) + 1;
    }
    return std::string(mine).replace(begin, mine.find('-', begin) - begin, number);
  };
  const std::string gone = with(1, "1");
  const std::tuple<std::string, int, bool> rows[] = {
      {mine, 9, true},          {gone, 0, false},         {with(0, "5000000"), 0, false},
      {with(2, "7"), 0, true},  {with(3, "7"), 0, true},  {with(3, "0"), 0, true},
      {with(2, "7"), 1, false}, {with(3, "7"), 1, false}, {with(3, "0"), 1, false},
      {gone + "x", 9, true},    {"x" + gone, 9, true},    {with(2, "x"), 9, true},
  };
  for (const auto& [name, days, stays] : rows) {
    directory.Write(name, "");
    const auto age = std::chrono::hours(24 * days) + std::chrono::seconds(9);
    fs::last_write_time(name, fs::file_time_type::clock::now() - age);
    RemoveAbandonedFiles(".");
    EXPECT_EQ(stays, fs::remove(name)) << name << " " << days;
  }
  // What others may put there.
  directory.Write("file", "");
  fs::create_symlink("file", gone);
  fs::create_directory(with(1, "2"));
  directory.Write(with(1, "3"), "");
  EXPECT_TRUE(chown(with(1, "3").c_str(), 1, 1) == 0 || geteuid() != 0);
  RemoveAbandonedFiles(".");
  EXPECT_EQ(geteuid() == 0 ? 4 : 3, std::distance(fs::directory_iterator("."), {}));
  // Every place that is asked for room.
  for (const std::string place : {"/volume/@tmp/", "/tmp/", "/var/@tmp/"}) {
    fs::create_directories(RootedPath(place));
    std::ofstream(RootedPath(place) + gone) << "";
    EXPECT_EQ("", Find({0, 0, 0}, 1));
    EXPECT_FALSE(fs::exists(RootedPath(place) + gone)) << place;
  }
}

TEST(UploadDirectory, ThatCannotBeMadeIsAnErrorOfItsOwn) {
  const WebAPIDirectory directory;
  std::ofstream(RootedPath("/var")) << "a file";
  const Blocks blocks{0, 0, 1 << 18};
  std::string found;
  g_blocks = &blocks;
  EXPECT_FALSE(APIUploadPrivate::CanUploadtoRoot(found, 1));
  g_blocks = nullptr;
  EXPECT_EQ(3072, QLIBCErrGet());
}

}  // namespace
}  // namespace ORBO
