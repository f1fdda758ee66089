#include "util/utf8.h"

#include <algorithm>

namespace ORBO::UTF8 {
namespace {

// The well-formed characters of several bytes by their first byte (Unicode,
// table 3-7).  The bounds of the second byte shut out overlong forms, surrogates
// and what lies above U+10FFFF; further bytes are 80 to BF.
struct Form {
  unsigned char first_lead;
  unsigned char last_lead;
  unsigned char length;
  unsigned char first_second;
  unsigned char last_second;
};

constexpr Form kForms[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

bool IsWithin(char c, unsigned char first, unsigned char last) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= first && byte <= last;
}

const Form* FindForm(char lead) {
  for (const Form& form : kForms) {
    if (IsWithin(lead, form.first_lead, form.last_lead)) {
      return &form;
    }
  }
  return nullptr;
}

// How many bytes at the start of `text` fit the form; the lead byte does.
std::size_t FittingLength(std::string_view text, const Form& form) {
  if (text.size() < 2 || !IsWithin(text[1], form.first_second, form.last_second)) {
    return 1;
  }
  std::size_t length = 2;
  while (length < std::min<std::size_t>(form.length, text.size()) &&
         IsWithin(text[length], 0x80, 0xBF)) {
    ++length;
  }
  return length;
}

}  // namespace

void Append(char32_t code_point, std::string& out) {
  const auto tail = [&out, code_point](unsigned int shift) {
    out += static_cast<char>(0x80 | ((code_point >> shift) & 0x3F));
  };
  if (code_point < 0x80) {
    out += static_cast<char>(code_point);
  } else if (code_point < 0x800) {
    out += static_cast<char>(0xC0 | (code_point >> 6));
    tail(0);
  } else if (code_point < 0x10000) {
    out += static_cast<char>(0xE0 | (code_point >> 12));
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xF0 | (code_point >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

std::size_t CharacterLength(std::string_view text) {
  const Form* form = text.empty() ? nullptr : FindForm(text.front());
  return form != nullptr && FittingLength(text, *form) == form->length ? form->length : 0;
}

std::size_t MalformedLength(std::string_view text) {
  const Form* form = text.empty() ? nullptr : FindForm(text.front());
  return form != nullptr ? FittingLength(text, *form) : 1;
}

bool IsPrintable(std::string_view text) {
  while (!text.empty()) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first < 0x80 ? 1 : CharacterLength(text);
    if (length == 0 || first < ' ' || first == 0x7F) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace ORBO::UTF8
