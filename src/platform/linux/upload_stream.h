#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "platform/linux/multipart_reader.h"
#include "platform/string_table.h"
#include "platform/upload.h"

namespace ORBO {

class StoredFile;

// An upload being read: fields into tables, files into directories, within the
// limits of what one request may bring.  Operations return codes of
// platform/upload.h; a failure is final.
class UploadStream {
 public:
  // `descriptor` is not owned; the others are the CGI variables CONTENT_TYPE and
  // CONTENT_LENGTH.
  UploadStream(int descriptor, std::string_view content_type, std::string_view content_length);

  // Reads the fields in front of the next file, or of the end, into `table`.
  int ReadFields(QLIBSZHASH& table);
  // The file that comes next; null where there is none.
  const PartHeader* File();
  std::uint64_t MostContent() { return reader_.MostContent(); }
  // Stores that file in `directory`, and goes to the next part.  The path is added to
  // `paths` under the name that goes into `key`, the file's own name to `names`.
  int StoreFile(const std::string& directory, QLIBSZHASH& paths, QLIBSZHASH& names,
                std::string& key);
  // Both, and Finish, until the end of the body.
  int ReadAll(const std::string& directory, QLIBSZHASH& fields, QLIBSZHASH& paths);
  // Reads what follows the last part, if all parts were read.
  int Finish();

  // The body from boundary_position on as it came: what begins `text`, then what is
  // left of the body returned.  Only after ReadFields; nothing else can be read then.
  UploadBody& TakeRest(std::string& text);

  void SetProgress(OrboCgiUploadProgress progress) { progress_ = progress; }
  std::uint64_t boundary_position() const { return reader_.boundary_position(); }
  std::uint64_t length() { return reader_.body().length(); }
  // Makes every later operation fail.
  int Fail(int error);

 private:
  int Result() const { return reader_.error() == 0 ? kUploadLoaded : reader_.error(); }
  void Begin();
  bool IsFileChosen();
  void ReadField(QLIBSZHASH& table);
  void Copy(StoredFile& file);
  std::string ReserveKey(const std::string& field);
  void ReportProgress(bool is_end);

  MultipartReader reader_;
  bool has_begun_ = false;
  int parts_ = 0;  // but for stored files
  int files_ = 0;
  std::size_t fields_size_ = 0;
  std::set<std::string> file_keys_;  // which no field of the client may set
  OrboCgiUploadProgress progress_ = nullptr;
  std::uint64_t reported_ = 0;
};

}  // namespace ORBO
