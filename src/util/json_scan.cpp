#include "util/json_scan.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "util/hex_digit.h"
#include "util/utf8.h"

namespace ORBO::JSON {
namespace {

enum CharacterClass : unsigned char {
  kBlank = 1,
  kBlankOrSlash = 2,
  kDigit = 4,
  kStringEnd = 8,  // what ends a run of plain characters in a string
};

constexpr std::array<unsigned char, 256> MakeClasses() {
  std::array<unsigned char, 256> classes{};
  for (std::size_t c = 0; c < 0x20; ++c) {
    classes[c] = kStringEnd;
  }
  classes['"'] = kStringEnd;
  classes['\\'] = kStringEnd;
  for (const unsigned char c : {' ', '\t', '\n', '\r'}) {
    classes[c] |= kBlank | kBlankOrSlash;
  }
  classes['/'] = kBlankOrSlash;
  for (std::size_t c = '0'; c <= '9'; ++c) {
    classes[c] = kDigit;
  }
  return classes;
}

constexpr std::array<unsigned char, 256> kClasses = MakeClasses();

bool Is(char c, CharacterClass character_class) {
  return (kClasses[static_cast<unsigned char>(c)] & character_class) != 0;
}

// --- Escapes ---

constexpr char32_t kNoCodeUnit = 0x10000;

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// The code unit that four hexadecimal digits at the start of `text` spell, or
// kNoCodeUnit.
char32_t CodeUnit(std::string_view text) {
  if (text.size() < 4) {
    return kNoCodeUnit;
  }
  char32_t unit = 0;
  for (const char c : text.substr(0, 4)) {
    const int digit = HexDigit(c);
    if (digit < 0) {
      return kNoCodeUnit;
    }
    unit = unit << 4 | static_cast<char32_t>(digit);
  }
  return unit;
}

// The length of the escape whose backslash is at the start of `text`; 0 if it is
// malformed.
std::size_t EscapeLength(std::string_view text) {
  const char c = text.size() > 1 ? text[1] : '\0';
  if (c != 'u') {
    return c != '\0' && std::strchr("\"\\/bfnrt", c) != nullptr ? 2 : 0;
  }
  const char32_t unit = CodeUnit(text.substr(2));
  if (unit == kNoCodeUnit || IsLowSurrogate(unit)) {
    return 0;
  }
  if (!IsHighSurrogate(unit)) {
    return 6;
  }
  const bool is_pair = text.substr(6, 2) == "\\u" && IsLowSurrogate(CodeUnit(text.substr(8)));
  return is_pair ? 12 : 0;
}

void AppendEscape(std::string_view escape, std::string& out) {
  if (escape[1] != 'u') {
    static constexpr char kNames[] = "bfnrt";
    static constexpr char kMeanings[] = "\b\f\n\r\t";
    const char* const name = std::strchr(kNames, escape[1]);
    out += name != nullptr ? kMeanings[name - kNames] : escape[1];
    return;
  }
  char32_t code_point = CodeUnit(escape.substr(2));
  if (IsHighSurrogate(code_point)) {
    code_point = 0x10000 + ((code_point - 0xD800) << 10) + (CodeUnit(escape.substr(8)) - 0xDC00);
  }
  UTF8::Append(code_point, out);
}

// --- Tokens ---
//
// Positions are pointers from here on.  Each operation takes the position where
// something begins and returns the position after it, or null where the text is
// malformed.  What most texts consist of is inline and touches few registers.

// NUL, which no JSON text holds, stands for the end.
inline char Peek(const char* p, const char* end) { return p != end ? *p : '\0'; }

std::string_view Rest(const char* p, const char* end) {
  return {p, static_cast<std::size_t>(end - p)};
}

// The comment at `p`; where there is none after all, the same position.
const char* SkipComment(const char* p, const char* end) {
  const std::string_view rest = Rest(p, end);
  if (rest.substr(0, 2) == "//") {
    const std::size_t line_end = rest.find('\n');
    return line_end == std::string_view::npos ? end : p + line_end;
  }
  if (rest.substr(0, 2) == "/*") {
    const std::size_t closing = rest.find("*/", 2);
    return closing == std::string_view::npos ? nullptr : p + closing + 2;
  }
  return p;
}

bool IsFourSpaces(const char* p) {
  std::uint32_t word;
  std::memcpy(&word, p, sizeof(word));
  return word == 0x20202020;
}

const char* SkipManyBlanks(const char* p, const char* end, Comments comments) {
  for (;;) {
    while (p != end && Is(*p, kBlank)) {
      ++p;
      while (end - p >= 4 && IsFourSpaces(p)) {
        p += 4;
      }
    }
    if (p == end || *p != '/' || comments == Comments::kRefused) {
      return p;
    }
    const char* const after = SkipComment(p, end);
    if (after == p || after == nullptr) {
      return after;
    }
    p = after;
  }
}

// There is mostly one blank or none.
inline const char* SkipFewBlanks(const char* p, const char* end, Comments comments) {
  if (end - p < 2) {
    return SkipManyBlanks(p, end, comments);
  }
  p += *p == ' ' ? 1 : 0;
  return Is(*p, kBlankOrSlash) ? SkipManyBlanks(p, end, comments) : p;
}

// `p` is after the opening quote.
inline const char* SkipStringRest(const char* p, const char* end) {
  for (;;) {
    while (p != end && !Is(*p, kStringEnd)) {
      ++p;
    }
    if (Peek(p, end) != '\\') {
      return Peek(p, end) == '"' ? p + 1 : nullptr;
    }
    const std::size_t length = EscapeLength(Rest(p, end));
    if (length == 0) {
      return nullptr;
    }
    p += length;
  }
}

// At least one digit.
const char* SkipDigits(const char* p, const char* end) {
  const char* const begin = p;
  while (p != end && Is(*p, kDigit)) {
    ++p;
  }
  return p != begin ? p : nullptr;
}

const char* SkipNumber(const char* p, const char* end) {
  if (*p == '-') {
    ++p;
  }
  p = Peek(p, end) == '0' ? p + 1 : SkipDigits(p, end);
  if (p != nullptr && Peek(p, end) == '.') {
    p = SkipDigits(p + 1, end);
  }
  if (p != nullptr && (Peek(p, end) | 0x20) == 'e') {
    ++p;
    p = SkipDigits(Peek(p, end) == '+' || Peek(p, end) == '-' ? p + 1 : p, end);
  }
  return p;
}

const char* SkipWord(const char* p, const char* end, std::string_view word) {
  return Rest(p, end).substr(0, word.size()) == word ? p + word.size() : nullptr;
}

// Everything but strings and containers.
const char* SkipScalar(const char* p, const char* end) {
  switch (Peek(p, end)) {
    case 't':
      return SkipWord(p, end, "true");
    case 'f':
      return SkipWord(p, end, "false");
    case 'n':
      return SkipWord(p, end, "null");
    default:
      return p != end && (*p == '-' || Is(*p, kDigit)) ? SkipNumber(p, end) : nullptr;
  }
}

// --- Values ---

// Walks over one value of any kind, as a loop over its names and values.
class ValueScanner {
 public:
  ValueScanner(const char* end, Comments comments) : end_(end), comments_(comments) {}

  const char* Skip(const char* p);

 private:
  const char* SkipBlanks(const char* p) const { return SkipFewBlanks(p, end_, comments_); }
  // The same where mostly `expected` comes without blanks.
  const char* SkipBlanksBefore(char expected, const char* p) const {
    return Peek(p, end_) == expected ? p : SkipBlanks(p);
  }
  const char* Open(const char* p);
  const char* AfterName(const char* p);
  const char* AfterValue(const char* p);

  const char* const end_;
  const Comments comments_;
  std::size_t depth_ = 0;
  // Whether a member's name comes next rather than a value.
  bool name_is_due_ = false;
  // The brackets that close the open containers, by depth.
  char closing_[kMaxDepth];
};

// From an opening bracket to what stands behind it.
const char* ValueScanner::Open(const char* p) {
  if (depth_ == kMaxDepth) {
    return nullptr;
  }
  name_is_due_ = *p == '{';
  closing_[depth_++] = name_is_due_ ? '}' : ']';
  return SkipBlanks(p + 1);
}

// From the end of a member's name to its value.
const char* ValueScanner::AfterName(const char* p) {
  name_is_due_ = false;
  p = SkipBlanksBefore(':', p);
  return p != nullptr && Peek(p, end_) == ':' ? SkipBlanks(p + 1) : nullptr;
}

// From the end of a value to the next one, out of the containers that end there.
const char* ValueScanner::AfterValue(const char* p) {
  while (depth_ > 0) {
    p = SkipBlanksBefore(',', p);
    if (p == nullptr) {
      return nullptr;
    }
    const char closing = closing_[depth_ - 1];
    if (Peek(p, end_) == ',') {
      name_is_due_ = closing == '}';
      return SkipBlanks(p + 1);
    }
    if (Peek(p, end_) != closing) {
      return nullptr;
    }
    --depth_;
    ++p;
  }
  return p;
}

const char* ValueScanner::Skip(const char* p) {
  do {
    const char c = Peek(p, end_);
    if (c == '"') {
      p = SkipStringRest(p + 1, end_);
      if (p != nullptr && name_is_due_) {
        p = AfterName(p);
        continue;
      }
    } else if (name_is_due_) {
      return nullptr;
    } else if (c == '{' || c == '[') {
      p = Open(p);
      if (p == nullptr || Peek(p, end_) != closing_[depth_ - 1]) {
        continue;
      }
    } else {
      p = SkipScalar(p, end_);
    }
    p = p != nullptr ? AfterValue(p) : nullptr;
  } while (p != nullptr && depth_ > 0);
  return p;
}

std::size_t PositionOf(std::string_view text, const char* p) {
  return p != nullptr ? static_cast<std::size_t>(p - text.data()) : kMalformed;
}

}  // namespace

std::size_t SkipBlanks(std::string_view text, std::size_t position, Comments comments) {
  if (position >= text.size()) {
    return text.size();
  }
  const char* const end = text.data() + text.size();
  return PositionOf(text, SkipFewBlanks(text.data() + position, end, comments));
}

std::size_t SkipValue(std::string_view text, std::size_t position, Comments comments) {
  if (position >= text.size()) {
    return kMalformed;
  }
  ValueScanner scanner(text.data() + text.size(), comments);
  return PositionOf(text, scanner.Skip(text.data() + position));
}

std::size_t SkipString(std::string_view text, std::size_t position) {
  if (position >= text.size() || text[position] != '"') {
    return kMalformed;
  }
  const char* const end = text.data() + text.size();
  return PositionOf(text, SkipStringRest(text.data() + position + 1, end));
}

bool IsJson(std::string_view text, Comments comments) {
  const std::size_t begin = SkipBlanks(text, 0, comments);
  const std::size_t end = SkipValue(text, begin, comments);
  return end != kMalformed && SkipBlanks(text, end, comments) == text.size();
}

std::string DecodeString(std::string_view quoted) {
  std::string_view rest = quoted.substr(1, quoted.size() - 2);
  std::string out;
  while (!rest.empty()) {
    const std::string_view run = rest.substr(0, rest.find('\\'));
    out += run;
    rest.remove_prefix(run.size());
    if (!rest.empty()) {
      const std::size_t length = EscapeLength(rest);
      AppendEscape(rest.substr(0, length), out);
      rest.remove_prefix(length);
    }
  }
  return out;
}

}  // namespace ORBO::JSON
