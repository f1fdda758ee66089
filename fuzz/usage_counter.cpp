// Usage counters: lines with API, method and version, and all after them the counter file
// that is found.  One counter goes up, the others stay.

#include <limits.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>

#include "runner/usage_counter.h"
#include "support/FuzzInput.h"
#include "support/require.h"
#include "support/scratch.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/read_file.h"
#include "util/utf8.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();

// The counter file of an API; "" if none can be.
std::string FileOf(const std::string& api) {
  std::size_t end = api.find('.');
  for (int dots = 1; dots < 4 && end != std::string::npos; ++dots) {
    end = api.find('.', end + 1);
  }
  const std::string name = api.substr(0, end) + ".json";
  const bool is_name = !api.empty() && api.find('/') == std::string::npos &&
                       api.find('\0') == std::string::npos &&
                       name.size() + sizeof ".lock" - 1 <= NAME_MAX;
  return is_name ? name : "";
}

// The counters in a text; none where it holds none.
Json::Value Read(const std::string& text) {
  Json::Value counters;
  return JSON::Parse(text, counters) && JSON::IsObject(counters) && !JSON::IsNull(counters)
             ? counters
             : Json::Value(Json::objectValue);
}

// As it is read after it was written.
Json::Value Written(const Json::Value& value) { return Read(JSON::ToText(value)); }

// What `counters` must be after one more call, but for the time of a new counter.
void CountIn(Json::Value& counters, const std::string& name, const Json::Value& after) {
  Json::Value& counter = *counters.demand(name.data(), name.data() + name.size());
  if (counter.type() != Json::objectValue || counter.empty()) {
    counter = Json::Value(Json::objectValue);
    counter["ctime"] = JSON::At(JSON::At(after, name), "ctime");
    Require(JSON::IsInt(counter["ctime"]));
  }
  const std::int64_t count = JSON::AsInt64(JSON::At(counter, "count"));
  counter["count"] = static_cast<Json::Int64>(std::min(count, kLargest - 1) + 1);
}

}  // namespace

void TestInput(FuzzInput input) {
  static const std::string kSpool = ScratchDirectory() + "/spool";
  const std::string api = input.TakeLine();
  const std::string method = input.TakeLine();
  const int version = JSON::AsInt(Json::Value(input.TakeLine()));
  const std::string old(input.TakeRest());
  const std::string file = FileOf(api);
  if (!file.empty()) {
    WriteScratch("spool/" + file, old);
  }
  Require(CountCall(kSpool, api, method, version) == !file.empty());
  if (!file.empty()) {
    const std::string name = api + "_" + std::to_string(version) + "_" + method;
    Json::Value expected = Read(old);
    for (int calls = 1; calls <= 2; ++calls) {
      std::string text;
      Require(ReadWholeFile(kSpool + "/" + file, text));
      const Json::Value counters = Read(text);
      Require(!counters.empty());
      if (UTF8::IsPrintable(name)) {
        CountIn(expected, name, counters);
        Require(counters == Written(expected));
      }
      Require(calls == 2 || CountCall(kSpool, api, method, version));
    }
    for (const char* const ending : {"", ".lock", ".new"}) {
      fs::remove(kSpool + "/" + file + ending);
    }
  }
  // The marker alone is left, and nothing was made elsewhere.
  for (const auto& entry : fs::recursive_directory_iterator(ScratchDirectory())) {
    Require(entry.path() == kSpool || entry.path() == kSpool + "/.timestamp");
  }
}

}  // namespace ORBO
