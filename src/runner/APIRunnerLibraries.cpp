#include <dlfcn.h>

#include <webapi/APIRunner.h>

#include "request/APIRequestPrivate.h"
#include "util/exception_text.h"
#include "util/json_types.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIRunner.cpp";

using Libraries = std::map<std::string, void*>;

// The open library `path` of `libraries`, opened on first use; null, and logged, if it
// cannot be.
void* OpenLibrary(Libraries& libraries, const std::string& path) {
  // Through a pointer that the compiler does not see through: contrary to its
  // declaration dlopen lets pass what constructors of static objects throw.
  void* (*const volatile open)(const char*, int) = dlopen;
  const auto [library, is_new] = libraries.try_emplace(path, nullptr);
  if (!is_new) {
    return library->second;
  }
  try {
    library->second = open(path.c_str(), RTLD_LAZY);
  } catch (...) {
    // Stays null: opened again, a library that is half made would pass for whole.
    Log(LOG_ERR, "%s:%d cannot open library: %s. error = %s", kSource, __LINE__, path.c_str(),
        CurrentExceptionText().c_str());
    return nullptr;
  }
  void* const handle = library->second;
  if (handle == nullptr) {
    Log(LOG_ERR, "%s:%d cannot open library: %s. error = %s", kSource, __LINE__, path.c_str(),
        dlerror());
    libraries.erase(library);
  }
  return handle;
}

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
  void* const handle = OpenLibrary(libs_, request->private_->GetText("reqLib", "lib", ""));
  if (handle == nullptr) {
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
    if (handle != nullptr) {
      dlclose(handle);
    }
  }
  libs_.clear();
}

}  // namespace ORBO
