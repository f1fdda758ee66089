#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <tuple>

#include "platform/last_error.h"
#include "platform/linux/abandoned_files.h"
#include "transfer/APIUploadPrivate.h"
#include "unit/WebAPIDirectory.h"
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

TEST(UploadDirectory, IsTheFirstPlaceWithRoomAsTheSystemCountsIt) {
  const fsblkcnt_t gib = 1 << 18;
  const fsblkcnt_t reserve = 51200;  // of the root file system
  const unsigned long long block = 4096;
  const unsigned long long word = block * 4 * gib;
  const struct {
    const char* name;
    bool is_tinnox;
    Blocks blocks;
    unsigned long long size;
    std::string expected;
  } rows[] = {
      {"volume", false, {9, 9, 0}, 9 * block, "/volume/@tmp"},
      {"large volume", false, {9 * gib, 0, 0}, word + 1, "/volume/@tmp"},
      {"volume too small", false, {9, 10, 0}, 9 * block + 1, "/tmp"},
      {"volumes not used", true, {9, 9, 0}, 9 * block, "/tmp"},
      {"tmp too small", true, {9, 9, reserve + 10}, 9 * block + 1, "/var/@tmp"},
      {"root too small", true, {9, 9, reserve + 9}, 9 * block + 1, ""},
      {"tmp counted from 4 GiB", true, {0, 4 * gib + 1, 0}, block, "/tmp"},
      {"tmp and root counted from 4 GiB", true, {0, 4 * gib, 4 * gib + reserve}, 1, ""},
      {"most that tmp takes", true, {0, 4 * gib - 1, 0}, word - block, "/tmp"},
      {"4 GiB", true, {0, 9 * gib - 1, 9 * gib - 1}, word, ""},
      {"most that root takes",
       true,
       {0, 0, 4 * gib - 1},
       word - block * (reserve + 1),
       "/var/@tmp"},
      {"beyond root", true, {0, 0, 4 * gib - 1}, word - block * reserve, ""},
      {"anything", true, {0, 9, 9}, ~0ULL, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const WebAPIDirectory directory;
    directory.Configure("volumes=/volume/\n");
    std::filesystem::create_directories(RootedPath("/etc.defaults"));
    std::ofstream(RootedPath("/etc.defaults/orboinfo.conf")) << (row.is_tinnox ? "tinnox=yes" : "");
    QLIBCErrSet(0);
    std::string found;
    g_blocks = &row.blocks;
    EXPECT_EQ(!row.expected.empty(), APIUploadPrivate::FindUploadTmpDir(found, row.size));
    g_blocks = nullptr;
    EXPECT_EQ(row.expected.empty() ? "" : RootedPath(row.expected), found);
    EXPECT_EQ(row.expected != "/volume/@tmp" && row.expected != "/tmp", QLIBCErrGet() == 10496);
    EXPECT_TRUE(row.expected.empty() || row.expected == "/tmp" ||
                std::filesystem::is_directory(found));
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
    std::filesystem::last_write_time(name, std::filesystem::file_time_type::clock::now() - age);
    RemoveAbandonedFiles(".");
    EXPECT_EQ(stays, std::filesystem::remove(name)) << name << " " << days;
  }
  // What others may put there.
  directory.Write("file", "");
  std::filesystem::create_symlink("file", gone);
  std::filesystem::create_directory(with(1, "2"));
  directory.Write(with(1, "3"), "");
  EXPECT_TRUE(chown(with(1, "3").c_str(), 1, 1) == 0 || geteuid() != 0);
  RemoveAbandonedFiles(".");
  EXPECT_EQ(geteuid() == 0 ? 4 : 3, std::distance(std::filesystem::directory_iterator("."), {}));
  // Every place that is asked for room.
  const std::string places[] = {"/volume/@tmp/", "/tmp/", "/var/@tmp/"};
  for (const std::string& place : places) {
    std::filesystem::create_directories(RootedPath(place));
    std::ofstream(RootedPath(place) + gone) << "";
  }
  const Blocks none{};
  std::string found;
  g_blocks = &none;
  EXPECT_FALSE(APIUploadPrivate::FindUploadTmpDir(found, 1));
  g_blocks = nullptr;
  for (const std::string& place : places) {
    EXPECT_FALSE(std::filesystem::exists(RootedPath(place) + gone)) << place;
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
