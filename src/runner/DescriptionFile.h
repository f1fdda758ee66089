#pragma once

#include <json/value.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "util/json_members.h"

namespace ORBO {

// One description file: its text with an index of the APIs, versions and
// methods in it.
//
// A process serves one call, which needs one method of one API.  The text is
// therefore checked and indexed in one pass, and only what the call asks for
// becomes JSON values.  All positions and views refer to the text and live as
// long as the file object.  Where a name occurs twice in an object the last
// one counts.
class DescriptionFile {
 public:
  // One element of a version's method list: a bare name, or an object of names
  // and attributes, which has one member as a rule.
  struct Method {
    std::string_view text;
    std::string_view name;  // first name in the text, with its quotes; empty for other elements
    std::string_view attributes;  // the value of that name; empty for a bare name
    bool one_member;
  };

  // The method list of one version.
  struct Version {
    std::string_view name;  // with its quotes
    bool is_list;
    std::size_t first;  // position in Entry::methods
    std::size_t count;
  };

  // The description entry of one API.
  struct Entry {
    std::string api;
    std::string_view text;
    std::vector<JSON::Member> members;
    std::vector<Version> versions;
    std::vector<Method> methods;

    // The text of the last member `key`; empty if there is none.
    std::string_view Find(std::string_view key) const;
  };

  // Reads and indexes the file `path`.  Null if it cannot be read or is not one
  // JSON object; comments are allowed.
  static std::unique_ptr<DescriptionFile> Read(const std::string& path);

  DescriptionFile(const DescriptionFile&) = delete;
  DescriptionFile& operator=(const DescriptionFile&) = delete;

  // The whole text, which all views are pieces of.
  const std::string& text() const { return text_; }
  // The APIs of the file in name order.
  const std::vector<Entry>& entries() const { return entries_; }

 private:
  DescriptionFile() = default;

  bool Index();
  std::size_t IndexEntry(std::size_t position, Entry& entry);
  std::size_t IndexVersions(std::size_t position, Entry& entry);
  std::size_t IndexMethods(std::size_t position, Entry& entry);
  std::size_t IndexMethod(std::size_t position, Method& method);
  void KeepLastOfEachName();

  std::string text_;
  std::vector<Entry> entries_;
};

}  // namespace ORBO
