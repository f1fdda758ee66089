#include "util/json_cursor.h"

namespace ORBO::JSON {

ContainerCursor::ContainerCursor(std::string_view text, std::size_t position, Comments comments)
    : text_(text),
      position_(position + 1),
      comments_(comments),
      is_object_(text[position] == '{') {}

bool ContainerCursor::Fail() {
  position_ = kMalformed;
  return false;
}

bool ContainerCursor::ReadKey() {
  const std::size_t end = SkipString(text_, position_);
  if (end == kMalformed) {
    return Fail();
  }
  key_ = text_.substr(position_, end - position_);
  position_ = SkipBlanks(text_, end, comments_);
  if (position_ >= text_.size() || text_[position_] != ':') {
    return Fail();
  }
  position_ = SkipBlanks(text_, position_ + 1, comments_);
  return position_ != kMalformed;
}

bool ContainerCursor::Next() {
  if (position_ == kMalformed) {
    return false;
  }
  position_ = SkipBlanks(text_, position_, comments_);
  if (position_ >= text_.size()) {
    return Fail();
  }
  const char c = text_[position_];
  if (c == (is_object_ ? '}' : ']')) {
    ++position_;
    return false;
  }
  if (!first_) {
    if (c != ',') {
      return Fail();
    }
    position_ = SkipBlanks(text_, position_ + 1, comments_);
  }
  first_ = false;
  if (position_ >= text_.size() || (is_object_ && !ReadKey())) {
    return Fail();
  }
  value_ = position_;
  return true;
}

bool QuotedEquals(std::string_view quoted, std::string_view text) {
  const std::string_view inner = quoted.substr(1, quoted.size() - 2);
  return inner.find('\\') == std::string_view::npos ? inner == text : DecodeString(quoted) == text;
}

}  // namespace ORBO::JSON
