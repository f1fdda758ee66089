#pragma once

#include <ios>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace ORBO {

// Holds back what is written to a stream until the stream is flushed, so that the
// beginning of an answer that cannot be given leaves no trace.  While it lives the
// stream throws nothing; its error state and exception mask are restored, but for
// errors that came meanwhile.
class HeldOutput : public std::streambuf {
 public:
  explicit HeldOutput(std::ostream& stream);
  // Forgets what is still held.
  ~HeldOutput() override;

  HeldOutput(const HeldOutput&) = delete;
  HeldOutput& operator=(const HeldOutput&) = delete;

  // What the innermost holder of `stream` holds; empty without one.  Valid until
  // something is written.
  static std::string_view Of(const std::ostream& stream);

  std::string_view text() const { return text_; }
  // Whether there was no memory for a text.  Nothing of what was held with it is
  // passed on.
  bool is_lost() const { return is_lost_; }
  // Passes on what is held.
  void Pass();

 protected:
  int_type overflow(int_type character) override;
  std::streamsize xsputn(const char* text, std::streamsize size) override;
  int sync() override;

 private:
  std::streamsize Hold(const char* text, std::size_t size);
  bool Write();

  std::ostream& stream_;
  std::ios::iostate previous_state_;
  std::ios::iostate previous_exceptions_;
  std::streambuf* previous_buffer_;
  std::string text_;
  bool is_lost_ = false;
};

}  // namespace ORBO
