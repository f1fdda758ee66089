#include "transfer/APIUploadPrivate.h"

#include <webapi/APIRequest.h>

#include <memory>

#include "platform/string_table.h"
#include "platform/webapi_util.h"
#include "util/json_types.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIUpload";
constexpr int kNoRoom = -2;
constexpr int kNothing = -6;
constexpr int kFileUnknown = -8;
constexpr int kNoMemory = -9;
constexpr unsigned long long kHeadroom = 5ULL << 20;
constexpr int kTableSlots = 256;

struct FreeTable {
  void operator()(QLIBSZHASH* table) const { QLIBCSzHashFree(table); }
};
using Table = std::unique_ptr<QLIBSZHASH, FreeTable>;

// Calls `read`; no exception leaves, be it for lack of memory, of which JSON values tell
// by one of their own, or of the callback for progress.
template <typename Read>
int WithoutException(Read read) {
  try {
    return read();
  } catch (...) {
    Log(LOG_ERR, "%s:%d upload ended by an exception", kSource, __LINE__);
    return kNoMemory;
  }
}

// The directory for `size` bytes from the client.
bool FindDirectory(unsigned long long size, std::string& dir) {
  return APIUploadPrivate::FindUploadTmpDir(dir, size + kHeadroom);
}

void AppendPaths(const QLIBSZHASH& table, Json::Value& files) {
  for (const auto& [field, path] : table.pairs) {
    files.append(path);
  }
}

}  // namespace

APIUploadPrivate::APIUploadPrivate(APIUpload* owner, APIRequest* request)
    : owner_(owner), request_(request) {
  OrboCgiInit("", &cgi_);
}

APIUploadPrivate::~APIUploadPrivate() { OrboCgiFree(&cgi_); }

int APIUploadPrivate::GetUploadParam(Json::Value& params) {
  return WithoutException([&] {
    if (OrboCgiLoadUploadParams(&cgi_, progress_, &state_, &loaded_, &field_name_, &file_name_) >
        0) {
      WebAPIUtil::SzHashToJsonObj(cgi_.parameters, params);
    }
    if (!field_name_.empty() && !file_name_.empty()) {
      JSON::Set(params, field_name_, Json::Value(file_name_));
    }
    return state_.result;
  });
}

int APIUploadPrivate::GetUploadFile(Json::Value& params) {
  return WithoutException([&] {
    if (loaded_ == 0 || field_name_.empty() || file_name_.empty()) {
      return state_.result = kFileUnknown;
    }
    if (state_.size == 0) {
      return state_.result = kNothing;
    }
    std::string dir;
    if (!FindDirectory(state_.size, dir)) {
      return state_.result = kNoRoom;
    }
    if (OrboCgiLoadUploadFileToDir(&cgi_, dir.c_str(), progress_, &state_, &loaded_, &field_name_,
                                   &file_name_) > 0) {
      WebAPIUtil::SzHashToJsonObj(cgi_.parameters, params);
    }
    return state_.result;
  });
}

int APIUploadPrivate::GetUploadAll(Json::Value& params, Json::Value* files) {
  return WithoutException([&] {
    const unsigned long long size =
        JSON::AsUInt64(request_->GetEnv("CONTENT_LENGTH", Json::Value::nullSingleton()));
    if (size == 0) {
      return kNothing;
    }
    std::string dir;
    if (!FindDirectory(size, dir)) {
      return kNoRoom;
    }
    const Table fields(QLIBCSzHashAlloc(kTableSlots));
    const Table paths(QLIBCSzHashAlloc(kTableSlots));
    if (fields == nullptr || paths == nullptr) {
      Log(LOG_ERR, "%s:%d cannot alloc memory for hash!", kSource, 211);
      return kNoMemory;
    }
    QLIBSZHASH* const tables[] = {fields.get(), paths.get()};
    const int result = OrboCgiLoadUploadAll(tables, dir.c_str(), progress_, 0);
    if (files != nullptr && JSON::IsArray(*files)) {
      AppendPaths(*paths, *files);
    }
    if (result != kUploadLoaded) {
      return result;
    }
    if (!WebAPIUtil::SzHashToJsonObj(fields.get(), params) ||
        !WebAPIUtil::SzHashToJsonObj(paths.get(), params)) {
      Log(LOG_ERR, "%s:%d cannot convert hash to Json object!", kSource, 232);
      return kNoMemory;
    }
    return result;
  });
}

}  // namespace ORBO
