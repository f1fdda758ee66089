#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/multipart_header.h"
#include "platform/linux/upload_body.h"

namespace ORBO {

// Takes a multipart body apart (RFC 2046) as it comes.  Line ends are CR LF.
//
// A line that begins like a boundary and goes on otherwise is content.  After a
// failure nothing more can be read; `error` is the code of platform/upload.h.
class MultipartReader {
 public:
  MultipartReader(UploadBody body, std::string_view boundary);

  // Goes to the next part, past what is left of this one.  False at the end of the
  // body and on failure.
  bool NextPart();
  // The part that was gone to; null before the first, after the last and on failure.
  const PartHeader* part() const { return part_ ? &*part_ : nullptr; }

  // The next piece of the part's content, empty at its end; the same until some of
  // it is taken.  Valid until the next call.  False on failure.
  bool Content(std::string_view& piece);
  void Take(std::size_t count);
  // No more than this is left of the part; exact where its end has been read.
  std::uint64_t MostContent();

  // Reads what follows the final boundary.
  bool ReadEpilogue();

  // Where the boundary in front of the part, or the final one, begins.
  std::uint64_t boundary_position() const { return boundary_position_; }
  // What has been read from there on and is not ahead any more, while no content was
  // taken: the boundary and the header of the part.
  const std::string& part_text() const { return part_text_; }
  UploadBody& body() { return body_; }

  void Fail(int error);
  int error() const { return error_; }  // 0: none

 private:
  // What stands at a boundary in what is ahead.
  enum class Mark { kNone, kUnknown, kNext, kLast, kBroken };
  struct Found {
    std::size_t content = 0;  // bytes in front
    std::size_t size = 0;     // of the boundary with its line end
    Mark mark = Mark::kUnknown;
  };

  static Found MarkBehind(std::string_view rest);
  Found MarkAt(std::size_t position, std::size_t boundary_size) const;
  Found Search() const;
  bool ReadHeader();

  UploadBody body_;
  std::string boundary_;  // with the line end and the dashes in front
  std::optional<PartHeader> part_;
  std::string part_text_;
  bool at_line_start_ = true;
  std::uint64_t boundary_position_ = 0;
  int error_ = 0;
};

}  // namespace ORBO
