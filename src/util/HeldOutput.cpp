#include "util/HeldOutput.h"

#include <new>

namespace ORBO {

HeldOutput::HeldOutput(std::ostream& stream)
    : stream_(stream),
      previous_state_(stream.rdstate()),
      previous_exceptions_(stream.exceptions()) {
  stream_.exceptions(std::ios::goodbit);
  previous_buffer_ = stream_.rdbuf(this);
}

HeldOutput::~HeldOutput() {
  const std::ios::iostate state = stream_.rdstate() | previous_state_;
  stream_.rdbuf(previous_buffer_);
  stream_.setstate(state);
  if ((state & previous_exceptions_) == 0) {
    stream_.exceptions(previous_exceptions_);
  }
}

std::string_view HeldOutput::Of(const std::ostream& stream) {
  const auto* const held = dynamic_cast<const HeldOutput*>(stream.rdbuf());
  return held != nullptr ? held->text() : std::string_view();
}

HeldOutput::int_type HeldOutput::overflow(int_type character) {
  if (!traits_type::eq_int_type(character, traits_type::eof())) {
    const char text = traits_type::to_char_type(character);
    return Hold(&text, 1) == 1 ? character : traits_type::eof();
  }
  return traits_type::not_eof(character);
}

std::streamsize HeldOutput::xsputn(const char* text, std::streamsize size) {
  return Hold(text, static_cast<std::size_t>(size));
}

// The stream would keep an exception for itself and go on with the next text.
std::streamsize HeldOutput::Hold(const char* text, std::size_t size) {
  try {
    text_.append(text, size);
  } catch (const std::bad_alloc&) {
    is_lost_ = true;
    return 0;
  }
  return static_cast<std::streamsize>(size);
}

int HeldOutput::sync() { return Write() && previous_buffer_->pubsync() == 0 ? 0 : -1; }

void HeldOutput::Pass() {
  if (!Write()) {
    stream_.setstate(std::ios::badbit);
  }
}

bool HeldOutput::Write() {
  if (is_lost_) {
    text_.clear();
    return false;
  }
  const auto size = static_cast<std::streamsize>(text_.size());
  const bool passed = size == 0 || previous_buffer_->sputn(text_.data(), size) == size;
  text_.clear();
  return passed;
}

}  // namespace ORBO
