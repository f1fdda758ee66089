#pragma once

#include <json/value.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "check/json_source.h"
#include "runner/DescriptionFile.h"

namespace ORBO::tool {

// A description file as the loader reads it, and where in it everything stands.
class DescribedFile {
 public:
  // Reads `name` of the working directory, which findings call `shown`.  Null, after a
  // finding with the place, if the loader cannot use it.
  static std::unique_ptr<DescribedFile> Read(const std::string& name, const std::string& shown,
                                             Findings& findings);

  const std::string& name() const { return name_; }
  const JsonSource& source() const { return source_; }
  const std::vector<DescriptionFile::Entry>& entries() const { return file_->entries(); }
  // The entry of `api`; null if there is none.
  const DescriptionFile::Entry* Find(const std::string& api) const;

  // The line of an entry's name.
  Place At(const DescriptionFile::Entry& entry) const;
  // The line of the last member `key` of the entry, or of the entry where it has none.
  Place At(const DescriptionFile::Entry& entry, std::string_view key) const;

 private:
  DescribedFile(std::string name, std::string shown, std::unique_ptr<DescriptionFile> file);

  std::string name_;
  std::unique_ptr<DescriptionFile> file_;
  JsonSource source_;                              // of that file
  std::map<std::string, std::string_view> names_;  // each API's name in the text
};

// Reads a JSON file whole.  False, after a finding with the place, if it cannot be read
// or is no JSON object.
bool ReadJsonObject(const std::string& name, const std::string& shown, std::string& text,
                    Findings& findings);

}  // namespace ORBO::tool
