#pragma once

#include <json/value.h>

#include <string>

#include <webapi/APIUpload.h>

#include "platform/cgi.h"
#include "platform/upload.h"

namespace ORBO {

class APIUploadPrivate {
 public:
  APIUploadPrivate(APIUpload* owner, APIRequest* request);
  ~APIUploadPrivate();

  APIUploadPrivate(const APIUploadPrivate&) = delete;
  APIUploadPrivate& operator=(const APIUploadPrivate&) = delete;

  void SetUploadCallback(OrboCgiUploadProgress callback) { progress_ = callback; }

  int GetUploadParam(Json::Value& params);
  int GetUploadFile(Json::Value& params);
  int GetUploadAll(Json::Value& params, Json::Value* files);

  // Chooses the directory for `size` bytes.  False where none has room.
  static bool FindUploadTmpDir(std::string& dir, unsigned long long size);
  static bool CanUploadtoTmp(std::string& dir, unsigned long long size);
  static bool CanUploadtoRoot(std::string& dir, unsigned long long size);

 private:
  APIUpload* owner_;     // not owned
  APIRequest* request_;  // not owned
  OrboCgiUploadProgress progress_ = nullptr;
  OrboCgiUploadState state_;
  OrboCgi cgi_;  // with the fields read
  unsigned char loaded_ = 0;
  std::string field_name_;  // of the file that comes next
  std::string file_name_;
};

}  // namespace ORBO
