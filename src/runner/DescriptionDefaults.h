#pragma once

#include <json/value.h>

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "util/json_members.h"

namespace ORBO {

// The name of the defaults file, in the web-API directory.
inline constexpr char kDefaultsFile[] = "lib.def";

// The defaults file: what descriptions and methods take for the attributes that
// they lack.  The text is checked at once; its members become values when they are
// asked for, since a call needs few of them.
class DescriptionDefaults {
 public:
  // No defaults, until a file is read.
  DescriptionDefaults() = default;

  DescriptionDefaults(const DescriptionDefaults&) = delete;
  DescriptionDefaults& operator=(const DescriptionDefaults&) = delete;

  // Reads the file `path`, once.  One that cannot be read or is not one JSON object
  // gives no defaults; comments are allowed.
  void Read(const std::string& path);

  // The member `name`, which no default gives null.  Valid while the object lives.
  const Json::Value& Get(std::string_view name);

 private:
  struct Value {
    const char* text;  // of the member that it was made from
    Json::Value value;
  };

  std::string text_;
  std::vector<JSON::Member> members_;
  std::deque<Value> values_;
};

}  // namespace ORBO
