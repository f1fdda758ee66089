#include "util/json_text.h"

#include <array>
#include <cmath>
#include <vector>

#include "util/json_types.h"
#include "util/number_text.h"
#include "util/utf8.h"

namespace ORBO::JSON {
namespace {

enum CharacterClass : unsigned char { kPlain, kEscaped, kMultibyte };

constexpr std::array<CharacterClass, 256> MakeClasses() {
  std::array<CharacterClass, 256> classes{};
  for (std::size_t c = 0; c < 0x20; ++c) {
    classes[c] = kEscaped;
  }
  classes['"'] = kEscaped;
  classes['\\'] = kEscaped;
  for (std::size_t c = 0x80; c < classes.size(); ++c) {
    classes[c] = kMultibyte;
  }
  return classes;
}

constexpr std::array<CharacterClass, 256> kClasses = MakeClasses();

CharacterClass ClassOf(char c) { return kClasses[static_cast<unsigned char>(c)]; }

void AppendEscape(char c, std::string& out) {
  static constexpr char kMeanings[] = "\"\\\b\f\n\r\t";
  static constexpr char kNames[] = "\"\\bfnrt";
  static constexpr char kHexDigits[] = "0123456789abcdef";
  const std::size_t index = std::string_view(kMeanings).find(c);
  out += '\\';
  if (index != std::string_view::npos) {
    out += kNames[index];
    return;
  }
  out += "u00";
  out += kHexDigits[c >> 4];
  out += kHexDigits[c & 0xF];
}

// Appends the character of several bytes, or what stands for malformed bytes, at
// the start of `text`; returns the number of bytes that it took.
std::size_t AppendMultibyte(std::string_view text, std::string& out) {
  const std::size_t length = UTF8::CharacterLength(text);
  if (length == 0) {
    out += "\xEF\xBF\xBD";
    return UTF8::MalformedLength(text);
  }
  out += text.substr(0, length);
  return length;
}

void AppendString(std::string_view text, std::string& out) {
  out += '"';
  while (!text.empty()) {
    std::size_t length = 0;
    while (length < text.size() && ClassOf(text[length]) == kPlain) {
      ++length;
    }
    out += text.substr(0, length);
    if (length < text.size() && ClassOf(text[length]) == kEscaped) {
      AppendEscape(text[length++], out);
    } else if (length < text.size()) {
      length += AppendMultibyte(text.substr(length), out);
    }
    text.remove_prefix(length);
  }
  out += '"';
}

void AppendFinite(double real, std::string& out) {
  if (std::isfinite(real)) {
    AppendReal(real, out);
  } else {
    out += "null";
  }
}

void AppendScalar(const Json::Value& value, std::string& out) {
  switch (value.type()) {
    case Json::booleanValue:
      out += AsBool(value) ? "true" : "false";
      break;
    case Json::intValue:
      AppendInteger(AsInt64(value), out);
      break;
    case Json::uintValue:
      AppendInteger(AsUInt64(value), out);
      break;
    case Json::realValue:
      AppendFinite(AsDouble(value), out);
      break;
    case Json::stringValue:
      AppendString(StringView(value), out);
      break;
    default:
      out += "null";
      break;
  }
}

bool IsContainer(const Json::Value& value) {
  return value.type() == Json::objectValue || value.type() == Json::arrayValue;
}

// An object or array that is being written.
class Level {
 public:
  explicit Level(const Json::Value& container)
      : next_(container.begin()),
        end_(container.end()),
        is_array_(container.type() == Json::arrayValue) {}

  // Appends what comes before the next value and returns that value, or appends
  // the closing bracket and returns null.
  const Json::Value* Next(std::string& out);

 private:
  void AppendName(std::string& out) const;

  Json::Value::const_iterator next_;
  Json::Value::const_iterator end_;
  bool is_array_;
  Json::ArrayIndex count_ = 0;
};

void Level::AppendName(std::string& out) const {
  const char* end = nullptr;
  const char* const name = next_.memberName(&end);
  AppendString({name, static_cast<std::size_t>(end - name)}, out);
  out += ':';
}

const Json::Value* Level::Next(std::string& out) {
  if (next_ == end_) {
    out += is_array_ ? ']' : '}';
    return nullptr;
  }
  if (count_ > 0) {
    out += ',';
  }
  if (!is_array_) {
    AppendName(out);
  } else if (next_.index() != count_) {
    // An array has no elements where none were set.
    ++count_;
    return &Json::Value::nullSingleton();
  }
  ++count_;
  const Json::Value& value = *next_;
  ++next_;
  return &value;
}

}  // namespace

// Without recursion: how deep a value is, is up to those who build it.
void Append(const Json::Value& value, std::string& out) {
  std::vector<Level> levels;
  const Json::Value* current = &value;
  while (current != nullptr) {
    if (IsContainer(*current)) {
      out += current->type() == Json::arrayValue ? '[' : '{';
      levels.emplace_back(*current);
    } else {
      AppendScalar(*current, out);
    }
    current = nullptr;
    while (!levels.empty() && (current = levels.back().Next(out)) == nullptr) {
      levels.pop_back();
    }
  }
}

std::string ToText(const Json::Value& value) {
  std::string text;
  Append(value, text);
  return text;
}

}  // namespace ORBO::JSON
