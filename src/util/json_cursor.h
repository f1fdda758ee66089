#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "util/json_scan.h"

namespace ORBO::JSON {

// Walks the members of an object or the elements of an array in JSON text
// without building values:
//
//   ContainerCursor cursor(text, position, comments);   // text[position] is '{' or '['
//   while (cursor.Next()) {
//     ... cursor.key(), text[cursor.value()] ...
//     cursor.Leave(SkipValue(text, cursor.value(), comments));
//   }
//   // cursor.end() is the position after the container, or kMalformed
//
// The caller consumes each value and says where it ended, so that nested
// containers are walked in one pass.
class ContainerCursor {
 public:
  ContainerCursor(std::string_view text, std::size_t position, Comments comments);

  // Moves to the next member or element.  False at the end of the container
  // and where the text is malformed.
  bool Next();
  // Tells where the current value ended; kMalformed ends the walk.
  void Leave(std::size_t value_end) { position_ = value_end; }

  // The current member's name as it stands in the text, quotes included; empty
  // in an array.
  std::string_view key() const { return key_; }
  // Where the current value begins.
  std::size_t value() const { return value_; }
  // Valid once Next has returned false.
  std::size_t end() const { return position_; }

 private:
  bool Fail();
  bool ReadKey();

  std::string_view text_;
  std::size_t position_;
  Comments comments_;
  bool is_object_;
  bool first_ = true;
  std::string_view key_;
  std::size_t value_ = 0;
};

// Calls `visit` with the name, quotes included, and the text of the value of each
// member of the one object that `text` is.  False if it is none, or `visit` says so.
template <typename Visit>
bool ForEachMember(std::string_view text, Visit visit, Comments comments = Comments::kRefused) {
  const std::size_t begin = SkipBlanks(text, 0, comments);
  if (begin >= text.size() || text[begin] != '{') {
    return false;
  }
  ContainerCursor cursor(text, begin, comments);
  while (cursor.Next()) {
    const std::size_t end = SkipValue(text, cursor.value(), comments);
    if (end == kMalformed ||
        !visit(cursor.key(), text.substr(cursor.value(), end - cursor.value()))) {
      return false;
    }
    cursor.Leave(end);
  }
  return cursor.end() != kMalformed && SkipBlanks(text, cursor.end(), comments) == text.size();
}

// Whether the well-formed JSON string `quoted`, its quotes included, spells
// `text`.
bool QuotedEquals(std::string_view quoted, std::string_view text);

}  // namespace ORBO::JSON
