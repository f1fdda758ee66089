#pragma once

#include <json/value.h>

#include <memory>
#include <string>

#include <webapi/Export.h>

namespace ORBO {

class APIRequest;
class APIUploadPrivate;

// The parts of an upload (multipart/form-data, RFC 7578), for a handler whose method
// has "deferUpload".  For any other method the entry has read everything before the
// handler runs.
//
//   ORBO::APIUpload upload(request);
//   Json::Value params(Json::objectValue);
//   if (upload.GetUploadParam(params) == 1 && upload.GetUploadFile(params) == 1 &&
//       ORBO::APIUpload::IsStoredFile(params["file"].asString())) { ... }
//
// A file is in the parameters under its field's name, as the path where it is stored,
// and under that name with ".name" behind, as the client named it: the last part of
// what it sent, possibly empty, and never to be used as a path.  Further files of one
// field are "field.2", "field.3" and so on.  All other parameters are text.
//
// A stored file is removed when the request ends, however it ends; move it (rename)
// to keep it.  Not thread-safe.
class WEBAPI_EXPORT APIUpload {
 public:
  // `request` is not owned and must outlive this object.
  explicit APIUpload(APIRequest* request);
  ~APIUpload();

  // Not copyable: the body is read once.
  APIUpload(const APIUpload&) = delete;
  APIUpload& operator=(const APIUpload&) = delete;

  // From now on `callback` is told, about every hundredth of the body, how many
  // bytes of how many have been read.  Null: nobody is told.
  void SetUploadCallback(void (*callback)(unsigned long long done, unsigned long long total));

  // The readers add to the object `params`.  They return 1 on success; -2 where no
  // directory has enough room, -6 where there is nothing to read, -8 where no file is
  // known, -9 without memory or when the callback throws; otherwise the platform's code
  // (docs/transfer.md).

  // Reads the fields in front of the next file.  That file's name is in `params`
  // under the name of its field.
  int GetUploadParam(Json::Value& params);
  // Stores the file that GetUploadParam, or the last call, has found, and reads on to
  // the next one.
  int GetUploadFile(Json::Value& params);
  // Reads all that is left.  The paths of the files are also appended to the array
  // `*files`, those of a failed call too; null where they are not wanted.
  int GetUploadAll(Json::Value& params, Json::Value* files);

  // Whether `path` is that of a file stored by an upload of this process.  A client
  // may send any text in a field with the name of a file's: ask before using a
  // parameter as a path.
  static bool IsStoredFile(const std::string& path);

 private:
  std::unique_ptr<APIUploadPrivate> private_;
};

}  // namespace ORBO
