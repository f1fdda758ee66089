// Facts for a dashboard: small methods that a page asks for in one compound request,
// and one that puts its answer together from other APIs inside the process.

#include <sys/statvfs.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APIRunner.h>
#include <webapi/APITable.h>

#include <cstdio>
#include <memory>

namespace {

using ORBO::APIRequest;
using ORBO::APIResponse;

constexpr int kErrorUnavailable = 1001;
constexpr unsigned long long kKiB = 1024;

// A line-wise reader of a file of /proc; null if it cannot be opened.
std::unique_ptr<std::FILE, int (*)(std::FILE*)> OpenFacts(const char* path) {
  return {std::fopen(path, "re"), std::fclose};
}

// ORBO.Example.System 1 uptime: seconds since the start of the system.
void Uptime(APIRequest*, APIResponse* response) {
  const auto file = OpenFacts("/proc/uptime");
  double seconds = 0;
  if (file == nullptr || std::fscanf(file.get(), "%lf", &seconds) != 1) {
    response->SetError(kErrorUnavailable);
    return;
  }
  Json::Value data(Json::objectValue);
  data["seconds"] = static_cast<Json::Int64>(seconds);
  response->SetSuccess(data);
}

// ORBO.Example.System 1 load: runnable tasks, averaged over 1, 5 and 15 minutes.
void Load(APIRequest*, APIResponse* response) {
  const auto file = OpenFacts("/proc/loadavg");
  double averages[3] = {};
  if (file == nullptr ||
      std::fscanf(file.get(), "%lf %lf %lf", &averages[0], &averages[1], &averages[2]) != 3) {
    response->SetError(kErrorUnavailable);
    return;
  }
  Json::Value data(Json::objectValue);
  for (const double average : averages) {
    data["averages"].append(average);
  }
  response->SetSuccess(data);
}

// ORBO.Example.System 1 memory: bytes.
void Memory(APIRequest*, APIResponse* response) {
  const auto file = OpenFacts("/proc/meminfo");
  Json::Value data(Json::objectValue);
  char line[128];
  while (file != nullptr && std::fgets(line, sizeof line, file.get()) != nullptr) {
    unsigned long long kibibytes = 0;
    if (std::sscanf(line, "MemTotal: %llu kB", &kibibytes) == 1) {
      data["total"] = static_cast<Json::UInt64>(kibibytes * kKiB);
    } else if (std::sscanf(line, "MemAvailable: %llu kB", &kibibytes) == 1) {
      data["available"] = static_cast<Json::UInt64>(kibibytes * kKiB);
    }
  }
  if (data.size() == 2) {
    response->SetSuccess(data);
  } else {
    response->SetError(kErrorUnavailable);
  }
}

// ORBO.Example.System 1 volume: the file system of the root directory, in bytes.
void Volume(APIRequest*, APIResponse* response) {
  struct statvfs facts {};
  if (statvfs("/", &facts) != 0) {
    response->SetError(kErrorUnavailable);
    return;
  }
  const Json::UInt64 block = facts.f_frsize;
  Json::Value data(Json::objectValue);
  data["total"] = block * facts.f_blocks;
  data["available"] = block * facts.f_bavail;
  response->SetSuccess(data);
}

// ORBO.Example.System 1 overview: how many books of the library are there, and who
// asks.  The other API is called as the same user.
void Overview(APIRequest* request, APIResponse* response) {
  const std::string user = request->GetLoginUserName();
  Json::Value books;
  ORBO::APIRunner::Exec(books, "ORBO.Example.Library", 1, "list", Json::Value(), user.c_str());
  if (!books["success"].asBool()) {
    response->SetError(kErrorUnavailable, books["error"]);
    return;
  }
  Json::Value data(Json::objectValue);
  data["user"] = user;
  data["books"] = books["data"]["total"];
  response->SetSuccess(data);
}

constexpr char kAPI[] = "ORBO.Example.System";

ORBO::_tag_API_TABLE methods[] = {
    {kAPI, 1, "uptime", Uptime}, {kAPI, 1, "load", Load},         {kAPI, 1, "memory", Memory},
    {kAPI, 1, "volume", Volume}, {kAPI, 1, "overview", Overview}, {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
