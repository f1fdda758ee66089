#pragma once

#include <json/value.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "runner/DescriptionDefaults.h"
#include "runner/DescriptionFile.h"
#include "util/SharedText.h"

namespace ORBO {

// The API descriptions that a runner has loaded, by API name.  Filled one file
// at a time by the first look-up of any API of that file; nothing is read
// again, since a process serves one HTTP request.
class DescriptionCache {
 public:
  // `defaults` must outlive the cache.
  explicit DescriptionCache(DescriptionDefaults& defaults) : defaults_(defaults) {}

  DescriptionCache(const DescriptionCache&) = delete;
  DescriptionCache& operator=(const DescriptionCache&) = delete;

  // Loads the file that holds `api`.  False, and logged, if there is none or it
  // cannot be used; true does not mean that the file describes `api`.
  bool Load(const std::string& api);

  // Whether a loaded file has a usable entry for `api`.
  bool Has(const std::string& api) const { return apis_.count(api) != 0; }

  // The entry of `api` with the defaults filled in, but without its "methods";
  // null for an API that is not there.  Valid until a file is loaded.
  const Json::Value* Info(const std::string& api);

  // The text of the entry's "methods", an object, which keeps its file alive.
  // Empty for an API that is not there.
  SharedText MethodsText(const std::string& api) const;

  bool IsMethodListed(const std::string& api, int version, const std::string& method) const;

  // The method's own attributes, or the defaults' where it has none.  Loads the
  // API's file where that has not been done.  Valid while the cache lives, and an
  // object unless the description or the defaults have none.
  const Json::Value& MethodAttributes(const std::string& api, int version,
                                      const std::string& method);

  // Copies one of these attributes to `out`; null for one that cannot be read.  False,
  // and `out` unchanged, if it is missing.
  bool FindMethodAttribute(const std::string& api, int version, const std::string& method,
                           std::string_view name, Json::Value& out);

  // One of these attributes as a truth value, of the defaults also where the method's
  // own attributes are neither an object nor null.
  bool IsMethodAttributeSet(const std::string& api, int version, const std::string& method,
                            std::string_view name);

 private:
  // The attributes of one method, of which a call needs few.
  struct Attributes {
    std::vector<JSON::Member> members;    // of an object
    std::unique_ptr<Json::Value> values;  // made when first asked for
  };

  struct Description {
    std::shared_ptr<const DescriptionFile> file;
    const DescriptionFile::Entry* entry = nullptr;  // of that file
    std::unique_ptr<Json::Value> info;              // made when first asked for
  };

  // The text of the method's own attributes; empty where it has none.
  std::string_view AttributesText(const std::string& api, int version, const std::string& method);
  Attributes& Split(std::string_view text);
  bool FindAttribute(std::string_view text, std::string_view name, Json::Value& out);

  DescriptionDefaults& defaults_;
  std::map<std::string, std::shared_ptr<const DescriptionFile>> files_;  // by path
  std::map<std::string, Description> apis_;
  std::set<std::string> unusable_;  // APIs without a usable file; looked for and logged once
  std::map<const char*, Attributes> attributes_;  // by the text that they came from
};

// The description file that holds `api`; empty, and logged, if there is none.
std::string FindDescriptionFile(const std::string& api);

// Reads a description file; null, and logged, if it cannot be used.
std::unique_ptr<DescriptionFile> ReadDescriptionFile(const std::string& path);

// Logs that an entry is left out.
void LogInvalidEntry(const DescriptionFile::Entry& entry);

// The usable entries of `file` in name order; the others are logged.
std::vector<const DescriptionFile::Entry*> ValidEntries(const DescriptionFile& file);

}  // namespace ORBO
