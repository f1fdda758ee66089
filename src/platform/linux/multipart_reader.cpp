#include "platform/linux/multipart_reader.h"

#include <algorithm>
#include <cstring>

#include "platform/upload.h"

namespace ORBO {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kHeaderEnd = "\r\n\r\n";
constexpr std::size_t kLargestHeader = 16384;
constexpr std::size_t kMostPadding = 1024;

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

// Unlike string_view's own, which looks at each place where the first character
// stands, fast for every content.
std::size_t Find(std::string_view text, std::string_view wanted, std::size_t from) {
  const void* const found =
      memmem(text.data() + from, text.size() - from, wanted.data(), wanted.size());
  return found == nullptr ? std::string_view::npos
                          : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

// The bytes at the end of `text` that may be the beginning of `wanted`, whose first
// character it has only once.
std::size_t HeldBack(std::string_view text, std::string_view wanted) {
  text.remove_prefix(text.size() - std::min(text.size(), wanted.size() - 1));
  const std::size_t start = text.rfind(wanted.front());
  return start != std::string_view::npos && StartsWith(wanted, text.substr(start))
             ? text.size() - start
             : 0;
}

}  // namespace

MultipartReader::MultipartReader(UploadBody body, std::string_view boundary)
    : body_(std::move(body)), boundary_("\r\n--") {
  boundary_ += boundary;
}

void MultipartReader::Fail(int error) {
  part_.reset();
  if (error_ == 0) {
    error_ = error;
  }
}

// What follows the characters of a boundary.
MultipartReader::Found MultipartReader::MarkBehind(std::string_view rest) {
  if (StartsWith(rest, "--")) {
    return {0, 2, Mark::kLast};
  }
  if (rest == "-") {
    return {};
  }
  const std::size_t padding = std::min(rest.find_first_not_of(" \t"), rest.size());
  rest.remove_prefix(padding);
  if (padding > kMostPadding) {
    return {0, 0, Mark::kBroken};
  }
  if (StartsWith(rest, kLineEnd)) {
    return {0, padding + kLineEnd.size(), Mark::kNext};
  }
  if (StartsWith(kLineEnd, rest)) {
    return {};
  }
  const bool is_broken = padding > 0 || rest.front() == '\r' || rest.front() == '\n';
  return {0, 0, is_broken ? Mark::kBroken : Mark::kNone};
}

MultipartReader::Found MultipartReader::MarkAt(std::size_t position,
                                               std::size_t boundary_size) const {
  Found found = MarkBehind(body_.ahead().substr(position + boundary_size));
  found.content = position;
  found.size += boundary_size;
  return found;
}

MultipartReader::Found MultipartReader::Search() const {
  const std::string_view text = body_.ahead();
  const std::string_view boundary = boundary_;
  const std::string_view dashes = boundary.substr(kLineEnd.size());
  if (at_line_start_ && StartsWith(text, dashes)) {
    const Found found = MarkAt(0, dashes.size());
    if (found.mark != Mark::kNone) {
      return found;
    }
  }
  std::size_t position = 0;
  while ((position = Find(text, boundary, position)) != std::string_view::npos) {
    const Found found = MarkAt(position, boundary.size());
    if (found.mark != Mark::kNone) {
      return found;
    }
    position += boundary.size();
  }
  return {text.size() - HeldBack(text, boundary), 0, Mark::kUnknown};
}

bool MultipartReader::Content(std::string_view& piece) {
  if (error_ != 0) {
    return false;
  }
  body_.Fill();
  const Found found = Search();
  if (found.mark == Mark::kBroken) {
    Fail(kUploadMalformed);
  } else if (found.mark == Mark::kUnknown && body_.ahead().size() < UploadBody::kEnough) {
    // There is no more, and no boundary.
    Fail(body_.HasFailed() ? kUploadReadFailed : kUploadCutShort);
  }
  piece = body_.ahead().substr(0, found.content);
  return error_ == 0;
}

void MultipartReader::Take(std::size_t count) {
  body_.Skip(count);
  at_line_start_ = at_line_start_ && count == 0;
}

std::uint64_t MultipartReader::MostContent() {
  std::string_view piece;
  if (!Content(piece)) {
    return 0;
  }
  const Found found = Search();
  if (found.mark == Mark::kNext || found.mark == Mark::kLast) {
    return found.content;
  }
  const std::uint64_t left = body_.length() - body_.position();
  const std::uint64_t end = boundary_.size() + 2;
  return left > end ? left - end : 0;
}

bool MultipartReader::NextPart() {
  std::string_view piece;
  do {
    if (!Content(piece)) {
      return false;
    }
    Take(piece.size());
  } while (!piece.empty());
  part_.reset();
  part_text_.clear();
  boundary_position_ = body_.position();
  const Found found = Search();
  if (found.mark == Mark::kLast) {
    return false;
  }
  part_text_ = body_.ahead().substr(0, found.size);
  body_.Skip(found.size);
  return ReadHeader();
}

bool MultipartReader::ReadHeader() {
  body_.Fill();
  const std::string_view text = body_.ahead();
  const std::size_t end = text.find(kHeaderEnd);
  if (end > kLargestHeader && text.size() > kLargestHeader) {
    Fail(kUploadTooMuch);
    return false;
  }
  if (end == std::string_view::npos) {
    Fail(body_.HasFailed() ? kUploadReadFailed : kUploadCutShort);
    return false;
  }
  PartHeader header;
  if (!ParsePartHeader(text.substr(0, end + kLineEnd.size()), header)) {
    Fail(kUploadMalformed);
    return false;
  }
  part_ = std::move(header);
  part_text_ += text.substr(0, end + kHeaderEnd.size());
  body_.Skip(end + kHeaderEnd.size());
  // The boundary may follow an empty part's header without a line in between.
  at_line_start_ = true;
  return true;
}

bool MultipartReader::ReadEpilogue() {
  while (error_ == 0 && !body_.IsWhole()) {
    body_.Skip(body_.ahead().size());
    body_.Fill();
    if (body_.ahead().empty()) {
      Fail(body_.HasFailed() ? kUploadReadFailed : kUploadCutShort);
    }
  }
  return error_ == 0;
}

}  // namespace ORBO
