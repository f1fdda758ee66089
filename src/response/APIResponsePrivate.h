#pragma once

#include <json/value.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <webapi/APIBase.h>
#include <webapi/APICookie.h>

namespace KEP {
class Task;
}

namespace ORBO {

class APIRequest;
class APIResponse;

// The state and the rules of APIResponse.
//
// Sections: "headers" (text only), "setCookie" (an array of cookies as text),
// "success" (exists and stays empty), "option", and from the first result on
// "body".
class APIResponsePrivate : public APIBase {
 public:
  using Callback = std::pair<void (*)(void*), void*>;
  using CallbackList = std::vector<Callback>;

  APIResponsePrivate(APIRequest* request, APIResponse* owner);
  ~APIResponsePrivate() override;

  // Of a background task's response every body goes into the task's record.
  void SetError(int code, const Json::Value& errors);
  int GetError() const { return error_; }
  // The body, or an empty object before any result; valid until the next
  // result.
  const Json::Value& Body();
  // Moves the body out.
  Json::Value TakeBody();
  // Forgets the result and the callbacks, so that the response can serve another
  // call; headers, cookies and options stay.
  void ClearResult();

  bool AddCookie(const std::string& name, const std::string& value, const std::string& path,
                 long expire_minutes, const std::string& domain, bool secure, bool http_only);
  bool AddCookie(const APICookie& cookie);
  bool Redirect(const std::string& path);

  void SetCallbackFunc(void (*function)(void*), void* argument);
  CallbackList* GetCallbackFuncs() { return &callbacks_; }

 private:
  bool AppendCookie(const APICookie& cookie);
  // Opens the record of the task that the request runs as, if it does; of another one
  // when that has changed.
  void BindTask();
  void WriteToTask();

  APIRequest* request_;              // not owned; may be null
  APIResponse* owner_;               // not owned
  std::unique_ptr<KEP::Task> task_;  // null until the first result of a task
  int error_ = 0;                    // the last code given to SetError
  CallbackList callbacks_;           // in the order of registration
  std::string task_name_;            // the full id of `task_`
};

}  // namespace ORBO
