#include "platform/linux/header_parameters.h"

#include <algorithm>

#include "util/trim.h"

namespace ORBO {
namespace {

constexpr std::string_view kBlanks = " \t";

bool IsControl(char c) { return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == 0x7f; }

void SkipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
}

// Takes the text in quotes at the start of `text`.
bool TakeQuoted(std::string_view& text, std::string& out) {
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '"') {
      text.remove_prefix(i + 1);
      return true;
    }
    const bool is_escape =
        text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == '"' || text[i + 1] == '\\');
    i += is_escape ? 1 : 0;
    out += text[i];
  }
  return false;
}

// Takes what stands in front of the next ";".
bool TakePlain(std::string_view& text, std::string& out) {
  out = Trim(text.substr(0, text.find(';')));
  text.remove_prefix(std::min(text.find(';'), text.size()));
  return out.find_first_of(" \t\"") == std::string::npos;
}

bool TakeParameter(std::string_view& text, HeaderValue& out) {
  const std::size_t end = text.find_first_of("=;\"");
  if (end == std::string_view::npos || text[end] != '=') {
    return false;
  }
  std::string name = LowerCase(Trim(text.substr(0, end)));
  std::string value;
  text.remove_prefix(end + 1);
  SkipBlanks(text);
  const bool is_quoted = !text.empty() && text.front() == '"';
  if (name.empty() || out.Parameter(name) != nullptr ||
      !(is_quoted ? TakeQuoted(text, value) : TakePlain(text, value))) {
    return false;
  }
  out.parameters.emplace_back(std::move(name), std::move(value));
  return true;
}

}  // namespace

const std::string* HeaderValue::Parameter(std::string_view name) const {
  for (const auto& [known, value] : parameters) {
    if (known == name) {
      return &value;
    }
  }
  return nullptr;
}

bool ParseHeaderValue(std::string_view text, HeaderValue& out) {
  if (std::any_of(text.begin(), text.end(), IsControl)) {
    return false;
  }
  out.word = LowerCase(Trim(text.substr(0, text.find(';'))));
  text.remove_prefix(std::min(text.find(';'), text.size()));
  while (!text.empty()) {
    if (text.front() != ';') {
      return false;
    }
    text.remove_prefix(1);
    SkipBlanks(text);
    // Some clients end the value with a separator.
    if (!text.empty() && !TakeParameter(text, out)) {
      return false;
    }
    SkipBlanks(text);
  }
  return true;
}

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
  }
  return lower;
}

}  // namespace ORBO
