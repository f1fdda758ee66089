#include <dlfcn.h>

#include <webapi/APIRunner.h>

#include "request/APIRequestPrivate.h"
#include "util/exception_text.h"
#include "util/json_types.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIRunner.cpp";

// The address of `symbol` in the open library `handle`, with the loader's error
// text, or null, in `error`.
void* FindSymbol(void* handle, const char* symbol, const char*& error) {
  dlerror();
  void* const address = dlsym(handle, symbol);
  error = dlerror();
  return address;
}

// Calls a library's table function; null if it throws.
template <typename Row>
Row* FetchTable(void* function) {
  try {
    return reinterpret_cast<Row* (*)()>(function)();
  } catch (...) {
    Log(LOG_ERR, "%s:%d table function ended by an exception: %s", kSource, __LINE__,
        CurrentExceptionText().c_str());
    return nullptr;
  }
}

}  // namespace

bool APIRunner::OpenLib(APIRequest* request, _tag_API_TABLE** table,
                        _tag_API_CHECK_TABLE** check_table) {
  if (table == nullptr || request == nullptr) {
    Log(LOG_ERR, "%s:%d Bad parameters", kSource, __LINE__);
    return false;
  }
  const std::string path = request->private_->GetText("reqLib", "lib", "");
  void*& handle = libs_[path];
  if (handle == nullptr) {
    handle = dlopen(path.c_str(), RTLD_LAZY);
  }
  if (handle == nullptr) {
    Log(LOG_ERR, "%s:%d cannot open library: %s. error = %s", kSource, __LINE__, path.c_str(),
        dlerror());
    libs_.erase(path);
    return false;
  }
  if (check_table != nullptr) {
    GetCheckTableFunc(handle, check_table);
  }
  if (!GetTableFunc(handle, table)) {
    Log(LOG_ERR, "%s:%d Get API Table Fail", kSource, __LINE__);
    return false;
  }
  return true;
}

bool APIRunner::GetTableFunc(void* handle, _tag_API_TABLE** table) {
  if (handle == nullptr || table == nullptr) {
    return false;
  }
  const char* error;
  void* const symbol = FindSymbol(handle, "GetAPITable", error);
  if (error != nullptr || symbol == nullptr) {
    Log(LOG_DEBUG, "%s:%d cannot load table: %s", kSource, __LINE__, error ? error : "null");
    return false;
  }
  *table = FetchTable<_tag_API_TABLE>(symbol);
  if (*table == nullptr) {
    Log(LOG_ERR, "%s:%d cannot get api table", kSource, __LINE__);
    return false;
  }
  return true;
}

bool APIRunner::GetCheckTableFunc(void* handle, _tag_API_CHECK_TABLE** check_table) {
  if (handle == nullptr || check_table == nullptr) {
    return false;
  }
  const char* error;
  void* const symbol = FindSymbol(handle, "GetAPICheckTable", error);
  if (error != nullptr || symbol == nullptr) {
    return true;  // a library without checks is normal
  }
  *check_table = FetchTable<_tag_API_CHECK_TABLE>(symbol);
  if (*check_table == nullptr) {
    Log(LOG_ERR, "%s:%d cannot get api check table", kSource, __LINE__);
    return false;
  }
  return true;
}

void APIRunner::CloseLib() {
  for (const auto& [path, handle] : libs_) {
    dlclose(handle);
  }
  libs_.clear();
}

}  // namespace ORBO
