#pragma once

#include <memory>
#include <string>

#include "check/DescribedFile.h"

namespace ORBO::tool {

// Where the description of an API stands, for explanations.
class DescribedCall {
 public:
  explicit DescribedCall(const std::string& api);

  // Why the loader has no description of the API; "" if it has one.
  const std::string& fault() const { return fault_; }

  // The file and line of the API, of the member `key` of its entry, or of a method.
  // There is a description.
  std::string PlaceOf() const;
  std::string PlaceOf(const char* key) const;
  std::string PlaceOf(int version, const std::string& method) const;

  // Whether the entry itself has the member `key`.
  bool HasOwn(const char* key) const { return !entry_->Find(key).empty(); }

  // The names that the list of `version` has.
  std::vector<std::string> MethodsOf(int version) const;

 private:
  std::string FindFault(const std::string& api);

  std::unique_ptr<DescribedFile> file_;
  const DescriptionFile::Entry* entry_ = nullptr;  // of that file
  std::string fault_;
};

}  // namespace ORBO::tool
