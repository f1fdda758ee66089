#include "check/json_faults.h"

#include <json/value.h>

#include <algorithm>
#include <set>

#include "util/json_scan.h"
#include "util/json_text.h"
#include "util/utf8.h"

namespace ORBO::tool {
namespace {

using JSON::kMalformed;

constexpr JSON::Comments kComments = JSON::Comments::kAllowed;

// Reads a document as the scanner does, and stops at what that refuses.  The operations
// take the position where something begins and return the one behind it, or kMalformed
// once there is a fault.
class FaultFinder {
 public:
  explicit FaultFinder(std::string_view text) : text_(text) {}

  std::optional<JsonFault> Find() {
    const std::size_t end = Blanks(Value(Blanks(0)));
    if (end != kMalformed && end != text_.size()) {
      Fail(end, "nothing may follow the end of the document");
    }
    return fault_;
  }

 private:
  std::size_t Fail(std::size_t position, const char* reason) {
    if (!fault_) {
      fault_ = JsonFault{position, reason};
    }
    return kMalformed;
  }
  bool Is(std::size_t position, char c) const {
    return position < text_.size() && text_[position] == c;
  }
  std::size_t Blanks(std::size_t position);
  std::size_t String(std::size_t position);
  std::size_t Name(std::size_t position);
  std::size_t Value(std::size_t position);
  std::size_t Container(std::size_t position);

  std::string_view text_;
  std::size_t depth_ = 0;
  std::optional<JsonFault> fault_;
};

std::size_t FaultFinder::Blanks(std::size_t position) {
  if (position == kMalformed) {
    return kMalformed;
  }
  const std::size_t end = JSON::SkipBlanks(text_, position, kComments);
  return end != kMalformed ? end : Fail(text_.find("/*", position), "this comment does not end");
}

std::size_t FaultFinder::String(std::size_t position) {
  const std::size_t end = JSON::SkipString(text_, position);
  if (end != kMalformed) {
    return end;
  }
  // Behind the opening quote, to the first character that no string holds as it is.
  const auto* const begin = text_.begin() + position + 1;
  const auto* const control =
      std::find_if(begin, text_.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
  const bool is_open = control == text_.end() || *control == '\n' || *control == '\r';
  const bool has_escape = std::find(begin, control, '\\') != control;
  return Fail(position, has_escape ? "this string has a wrong escape, or does not end on its line"
                        : is_open  ? "this string does not end on its line"
                                   : "this string holds a control character");
}

// The name of a member, to its value.
std::size_t FaultFinder::Name(std::size_t position) {
  if (!Is(position, '"')) {
    return Fail(position, "a name in double quotes is due here");
  }
  const std::size_t end = Blanks(String(position));
  if (end == kMalformed || Is(end, ':')) {
    return end == kMalformed ? end : Blanks(end + 1);
  }
  return Fail(end, "\":\" is due here, between a name and its value");
}

std::size_t FaultFinder::Container(std::size_t position) {
  if (depth_ == JSON::kMaxDepth) {
    return Fail(position, "this is nested too deep");
  }
  const bool is_object = Is(position, '{');
  const char closing = is_object ? '}' : ']';
  position = Blanks(position + 1);
  if (position == kMalformed || Is(position, closing)) {
    return position == kMalformed ? position : position + 1;
  }
  ++depth_;
  while (position != kMalformed) {
    position = Blanks(Value(is_object ? Name(position) : position));
    if (Is(position, closing)) {
      --depth_;
      return position + 1;
    }
    if (position == kMalformed || !Is(position, ',')) {
      return Fail(position,
                  is_object ? "\",\" or \"}\" is due here" : "\",\" or \"]\" is due here");
    }
    const std::size_t comma = position;
    position = Blanks(position + 1);
    if (Is(position, closing)) {
      return Fail(comma, "no \",\" may stand behind the last one");
    }
  }
  return position;
}

std::size_t FaultFinder::Value(std::size_t position) {
  if (position == kMalformed) {
    return position;
  }
  if (position >= text_.size()) {
    return Fail(position, "the text ends where a value is due");
  }
  if (Is(position, '{') || Is(position, '[')) {
    return Container(position);
  }
  if (Is(position, '"')) {
    return String(position);
  }
  const std::size_t end = JSON::SkipValue(text_, position, kComments);
  const bool is_mark = text_.substr(position, 3) == "\xef\xbb\xbf";
  return end != kMalformed ? end
                           : Fail(position, is_mark ? "no byte order mark may stand in the file"
                                                    : "this is no JSON value");
}

bool IsContainer(std::string_view value) { return value.front() == '{' || value.front() == '['; }

// The members and elements of `container`, with all that lies in them.
void CheckChildren(const JsonSource& source, std::string_view container, Findings& findings) {
  std::set<std::string> names;
  for (const Member& child : ChildrenOf(container)) {
    if (!child.key.empty()) {
      const std::string name = JSON::DecodeString(child.key);
      if (!names.insert(name).second) {
        findings.Error(source.At(child.key),
                       "a second " + Quoted(name) + ": only the last one counts");
      }
    }
    Json::Value ignored;
    if (IsContainer(child.text)) {
      CheckChildren(source, child.text, findings);
    } else if (!JSON::Parse(child.text, ignored)) {
      findings.Error(source.At(child.text), "this number is too large");
    }
  }
}

void CheckEncoding(const JsonSource& source, Findings& findings) {
  for (std::size_t i = 0; i < source.text.size();) {
    const std::string_view rest = source.text.substr(i);
    const std::size_t length =
        static_cast<unsigned char>(rest.front()) < 0x80 ? 1 : UTF8::CharacterLength(rest);
    if (length == 0) {
      findings.Warn(source.AtColumn(i), "this is no UTF-8");
      return;
    }
    i += length;
  }
}

}  // namespace

std::optional<JsonFault> FindJsonFault(std::string_view text) { return FaultFinder(text).Find(); }

void CheckJsonValues(const JsonSource& source, Findings& findings) {
  const std::size_t begin = JSON::SkipBlanks(source.text, 0, kComments);
  CheckChildren(source, source.text.substr(begin), findings);
  CheckEncoding(source, findings);
}

}  // namespace ORBO::tool
