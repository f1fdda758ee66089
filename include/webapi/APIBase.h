#pragma once

#include <json/value.h>

#include <string>

#include <webapi/Export.h>

namespace ORBO {

// A sectioned JSON store: one JSON object whose members are named sections,
// each an object of keys and values.  Requests, responses and polled tasks keep
// their state in one.
//
// A section exists only once the derived class has created it; no operation
// here creates one.  No operation throws or logs: failure is a false result or
// the caller's default.  Not thread-safe.
//
// The order of the virtual operations is part of the binary interface.
class WEBAPI_EXPORT APIBase {
 public:
  // A store without sections.
  APIBase();

  // Not copyable: derived classes hold back pointers to their public object.
  APIBase(const APIBase&) = delete;
  APIBase& operator=(const APIBase&) = delete;

  // True if `section` exists and has the member `key` (the empty key is looked
  // up like any other name).
  virtual bool HasData(const std::string& section, const std::string& key);

  // Merges the members of the object `value` into `section`; keys that `value`
  // does not name are kept.  With `string_only`, members that are no strings are
  // skipped.  False, and nothing changed, if there is no such section or
  // `value` is not an object or is empty.
  virtual bool SetData(const std::string& section, const Json::Value& value, bool string_only);

  // Sets one key of `section`, replacing its old value.  False, and nothing
  // changed, if there is no such section, `key` is empty, or `string_only` is
  // set and `value` is not a string.
  virtual bool SetData(const std::string& section, const std::string& key, const Json::Value& value,
                       bool string_only);

  // The value of `key` in `section`, the whole section if `key` is empty, or
  // `default_value` itself if there is no such section or key.  The reference
  // stays valid until the value is set again or cleared.
  virtual const Json::Value& GetData(const std::string& section, const std::string& key,
                                     const Json::Value& default_value);

  // Removes `key` from `section`; true if it was there.  An empty `key` empties
  // the section, which stays present, and gives true.  False if there is no
  // such section.
  virtual bool ClearData(const std::string& section, const std::string& key);

  virtual ~APIBase();

 protected:
  // The sections by name.
  Json::Value root_;
};

}  // namespace ORBO
