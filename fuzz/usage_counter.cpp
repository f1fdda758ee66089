// Usage counters: lines with API, method and version, and all after them the counter file
// that is found.  One counter goes up, the others stay.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <utility>

#include "runner/usage_counter.h"
#include "support/scratch.h"
#include "support/target.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/read_file.h"
#include "util/utf8.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();

// The counters in a text; none where it holds none.
Json::Value Read(const std::string& text) {
  Json::Value counters;
  return JSON::Parse(text, counters) && JSON::IsObject(counters) && !JSON::IsNull(counters)
             ? counters
             : Json::Value(Json::objectValue);
}

}  // namespace

void TestInput(FuzzInput input) {
  static const std::string kSpool = ScratchDirectory() + "/spool";
  const std::string api = input.TakeLine();
  const std::string method = input.TakeLine();
  const int version = JSON::AsInt(Json::Value(input.TakeLine()));
  // The first call shows where the file is; nothing may be made elsewhere.
  const bool is_counted = CountCall(kSpool, api, method, version);
  std::string file;
  for (const auto& entry : fs::recursive_directory_iterator(ScratchDirectory())) {
    const fs::path& path = entry.path();
    Require(path == kSpool || path.parent_path() == kSpool);
    if (path.extension() == ".json") {
      Require(std::exchange(file, path).empty());
    }
  }
  Require(is_counted == !file.empty());
  if (!is_counted) {
    return;
  }
  const std::string old(input.TakeRest());
  WriteScratch("spool/" + fs::path(file).filename().string(), old);
  std::string text;
  Require(CountCall(kSpool, api, method, version) && ReadWholeFile(file, text));
  for (const char* const ending : {"", ".lock", ".new"}) {
    fs::remove(file + ending);
  }
  Json::Value before = Read(old);
  Json::Value after = Read(text);
  Require(!after.empty());
  const std::string name = api + "_" + std::to_string(version) + "_" + method;
  // Other names may be written as one that was there.
  if (UTF8::IsPrintable(name) && name.find("\xEF\xBF\xBD") == std::string::npos) {
    const std::int64_t count = JSON::AsInt64(JSON::At(JSON::At(before, name), "count"));
    Require(JSON::At(JSON::At(after, name), "count") ==
            Json::Value(static_cast<Json::Int64>(std::min(count, kLargest - 1) + 1)));
    JSON::Remove(before, name);
    JSON::Remove(after, name);
    Require(after == Read(JSON::ToText(before)));
  }
}

}  // namespace ORBO
