#include "platform/linux/upload_stream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

#include "platform/linux/stored_file.h"
#include "platform/linux/stored_files.h"
#include "util/log.h"
#include "util/number_text.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "upload_stream.cpp";
constexpr std::size_t kLargestField = std::size_t{1} << 20;
constexpr std::size_t kLargestFields = std::size_t{8} << 20;
constexpr int kMostFields = 4096;
constexpr std::size_t kFileBuffer = std::size_t{256} << 10;
constexpr std::uint64_t kShortestStep = 65536;
constexpr std::uint64_t kLongestStep = 1 << 20;

// The CGI variable as a length; no sign, and nothing that a file cannot be.
bool ReadLength(std::string_view text, std::uint64_t& out) {
  JSON::Integer integer;
  if (text.empty() || text.front() < '0' || text.front() > '9' ||
      !JSON::ReadInteger(text, integer) ||
      integer.amount > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
    return false;
  }
  out = integer.amount;
  return true;
}

std::uint64_t LengthOrNone(std::string_view text) {
  std::uint64_t length = 0;
  ReadLength(text, length);
  return length;
}

int StoreError() {
  return errno == ENOSPC || errno == EDQUOT || errno == EFBIG ? kUploadNoRoom : kUploadStoreFailed;
}

}  // namespace

UploadStream::UploadStream(int descriptor, std::string_view content_type,
                           std::string_view content_length)
    : reader_(UploadBody(descriptor, LengthOrNone(content_length)),
              MultipartBoundary(content_type)) {
  std::uint64_t length = 0;
  if (MultipartBoundary(content_type).empty()) {
    Fail(kUploadNoBoundary);
  } else if (!ReadLength(content_length, length)) {
    Fail(kUploadNoLength);
  }
}

int UploadStream::Fail(int error) {
  reader_.Fail(error);
  return Result();
}

void UploadStream::Begin() {
  if (!std::exchange(has_begun_, true)) {
    reader_.NextPart();
  }
}

bool UploadStream::IsFileChosen() {
  const PartHeader* const part = reader_.part();
  return part != nullptr && part->file_name &&
         (!part->file_name->empty() || reader_.MostContent() > 0);
}

const PartHeader* UploadStream::File() { return IsFileChosen() ? reader_.part() : nullptr; }

int UploadStream::ReadFields(QLIBSZHASH& table) {
  Begin();
  while (reader_.part() != nullptr && !IsFileChosen()) {
    if (++parts_ > kMostFields) {
      return Fail(kUploadTooMuch);
    }
    // Else a file field in which nothing was chosen.
    if (reader_.part() != nullptr && !reader_.part()->file_name) {
      ReadField(table);
    }
    reader_.NextPart();
  }
  ReportProgress(false);
  return Result();
}

void UploadStream::ReadField(QLIBSZHASH& table) {
  const std::string name = reader_.part()->name;
  std::string text;
  std::string_view piece;
  fields_size_ += name.size();
  while (reader_.Content(piece) && !piece.empty()) {
    fields_size_ += piece.size();
    if (text.size() + piece.size() > kLargestField || fields_size_ > kLargestFields) {
      Fail(kUploadTooMuch);
      return;
    }
    text += piece;
    reader_.Take(piece.size());
  }
  if (fields_size_ > kLargestFields) {
    Fail(kUploadTooMuch);
  }
  if (reader_.error() == 0 && file_keys_.count(name) == 0) {
    table.pairs[name] = std::move(text);
  }
}

std::string UploadStream::ReserveKey(const std::string& field) {
  std::string key = field;
  for (int number = 2; file_keys_.count(key) + file_keys_.count(key + ".name") > 0; ++number) {
    key = field + "." + std::to_string(number);
  }
  file_keys_.insert({key, key + ".name"});
  return key;
}

int UploadStream::StoreFile(const std::string& directory, QLIBSZHASH& paths, QLIBSZHASH& names,
                            std::string& key) {
  if (++files_ > StoredFiles::kMost) {
    return Fail(kUploadTooMuch);
  }
  const PartHeader part = *reader_.part();
  StoredFile file;
  if (!file.Create(directory)) {
    Fail(StoreError());
    Log(LOG_ERR, "%s:%d cannot store an upload in %s: %s", kSource, __LINE__, directory.c_str(),
        std::strerror(errno));
    return Result();
  }
  Copy(file);
  if (reader_.error() == 0 && !file.Keep()) {
    Fail(StoreError());
  }
  if (reader_.error() == 0) {
    key = ReserveKey(part.name);
    paths.pairs[key] = file.path();
    names.pairs[key + ".name"] = *part.file_name;
    reader_.NextPart();
  }
  return Result();
}

void UploadStream::Copy(StoredFile& file) {
  reader_.body().Reserve(kFileBuffer);
  std::string_view piece;
  while (reader_.Content(piece) && !piece.empty()) {
    if (!file.Write(piece)) {
      Fail(StoreError());
      Log(LOG_ERR, "%s:%d cannot write an upload: %s", kSource, __LINE__, std::strerror(errno));
      return;
    }
    reader_.Take(piece.size());
    ReportProgress(false);
  }
}

int UploadStream::ReadAll(const std::string& directory, QLIBSZHASH& fields, QLIBSZHASH& paths) {
  std::string key;
  ReadFields(fields);
  while (File() != nullptr) {
    StoreFile(directory, paths, fields, key);
    ReadFields(fields);
  }
  return Finish();
}

int UploadStream::Finish() {
  if (reader_.part() == nullptr && reader_.ReadEpilogue()) {
    ReportProgress(true);
  }
  return Result();
}

UploadBody& UploadStream::TakeRest(std::string& text) {
  text = reader_.part_text();
  Fail(kUploadMalformed);
  return reader_.body();
}

void UploadStream::ReportProgress(bool is_end) {
  const std::uint64_t total = length();
  const std::uint64_t done = is_end ? total : reader_.body().position();
  const std::uint64_t step = std::clamp(total / 100, kShortestStep, kLongestStep);
  if (progress_ != nullptr && (is_end ? reported_ < total : done >= reported_ + step)) {
    reported_ = done;
    progress_(done, total);
  }
}

}  // namespace ORBO
