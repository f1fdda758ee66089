// Facts for a dashboard: small methods that a page asks for in one compound request,
// and one that puts its answer together from other APIs inside the process.

#include <sys/statvfs.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APIRunner.h>
#include <webapi/APITable.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

using ORBO::APIRequest;
using ORBO::APIResponse;

constexpr int kErrorUnavailable = 1001;
constexpr unsigned long long kKiB = 1024;

// The beginning of a file of /proc; "" if it cannot be read.
std::string ReadFacts(const char* path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "re"), std::fclose);
  char text[4096];
  return file == nullptr ? "" : std::string(text, std::fread(text, 1, sizeof text, file.get()));
}

// ORBO.Example.System 1 uptime: seconds since the start of the system.
void Uptime(APIRequest*, APIResponse* response) {
  const std::string facts = ReadFacts("/proc/uptime");
  if (facts.empty()) {
    response->SetError(kErrorUnavailable);
    return;
  }
  Json::Value data(Json::objectValue);
  data["seconds"] = static_cast<Json::Int64>(std::strtod(facts.c_str(), nullptr));
  response->SetSuccess(data);
}

// ORBO.Example.System 1 load: runnable tasks, averaged over 1, 5 and 15 minutes.
void Load(APIRequest*, APIResponse* response) {
  const std::string facts = ReadFacts("/proc/loadavg");
  if (facts.empty()) {
    response->SetError(kErrorUnavailable);
    return;
  }
  Json::Value data(Json::objectValue);
  char* rest = nullptr;
  const char* text = facts.c_str();
  for (int minutes = 0; minutes < 3; ++minutes) {
    data["averages"].append(std::strtod(text, &rest));
    text = rest;
  }
  response->SetSuccess(data);
}

// Bytes of the entry `name` of /proc/meminfo, which has a line "name: 1234 kB".
Json::UInt64 MemoryEntry(const std::string& facts, const std::string& name) {
  const std::size_t line = facts.find(name + ":");
  return line == std::string::npos
             ? 0
             : std::strtoull(facts.c_str() + line + name.size() + 1, nullptr, 10) * kKiB;
}

// ORBO.Example.System 1 memory: bytes.
void Memory(APIRequest*, APIResponse* response) {
  const std::string facts = ReadFacts("/proc/meminfo");
  Json::Value data(Json::objectValue);
  data["total"] = MemoryEntry(facts, "MemTotal");
  data["available"] = MemoryEntry(facts, "MemAvailable");
  if (data["total"].asUInt64() > 0) {
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
