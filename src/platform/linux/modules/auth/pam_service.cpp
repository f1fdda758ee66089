#include "platform/linux/modules/auth/pam_service.h"

#include <security/pam_appl.h>

#include <cstdlib>
#include <cstring>

#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "pam_service.cpp";
constexpr char kService[] = "webapi";

void CleansingFree(pam_response* responses, int count) {
  for (int i = 0; i < count; ++i) {
    if (responses[i].resp != nullptr) {
      explicit_bzero(responses[i].resp, std::strlen(responses[i].resp));
      std::free(responses[i].resp);
    }
  }
  std::free(responses);
}

// Answers a question for a hidden text with the password, which `argument` is.
// Nobody is there to answer any other question.
bool Answer(const pam_message& message, void* argument, pam_response& response) {
  switch (message.msg_style) {
    case PAM_PROMPT_ECHO_OFF:
      response.resp = strdup(static_cast<const char*>(argument));
      return response.resp != nullptr;
    case PAM_ERROR_MSG:
    case PAM_TEXT_INFO:
      return true;
    default:
      return false;
  }
}

int Converse(int count, const pam_message** messages, pam_response** out, void* argument) {
  if (count <= 0 || count > PAM_MAX_NUM_MSG) {
    return PAM_CONV_ERR;
  }
  auto* const responses =
      static_cast<pam_response*>(std::calloc(static_cast<std::size_t>(count), sizeof **out));
  if (responses == nullptr) {
    return PAM_BUF_ERR;
  }
  for (int i = 0; i < count; ++i) {
    if (!Answer(*messages[i], argument, responses[i])) {
      CleansingFree(responses, count);
      return PAM_CONV_ERR;
    }
  }
  *out = responses;  // freed by the caller
  return PAM_SUCCESS;
}

// The system keeps its own count of failures and must not hold up a process of the
// web server.
void DoNotDelay(int /*status*/, unsigned int /*microseconds*/, void* /*argument*/) {}

// One conversation with the service, ended on every path.
class Conversation {
 public:
  Conversation(const char* directory, const char* user, const char* password)
      : conversation_{Converse, const_cast<char*>(password)},
        status_(pam_start_confdir(kService, user, &conversation_, directory, &handle_)) {}
  ~Conversation() {
    if (handle_ != nullptr) {
      pam_end(handle_, status_);
    }
  }
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;

  // PAM_SUCCESS, or what failed first.
  int Run(const char* user, const char* address) {
    if (*address != '\0') {
      Step([&] { return pam_set_item(handle_, PAM_RHOST, address); });
    }
    Step([&] {
      return pam_set_item(handle_, PAM_FAIL_DELAY, reinterpret_cast<const void*>(&DoNotDelay));
    });
    Step([&] { return pam_authenticate(handle_, PAM_SILENT | PAM_DISALLOW_NULL_AUTHTOK); });
    Step([&] { return pam_acct_mgmt(handle_, PAM_SILENT | PAM_DISALLOW_NULL_AUTHTOK); });
    Step([&] { return IsStill(user) ? PAM_SUCCESS : PAM_USER_UNKNOWN; });
    return status_;
  }

  const char* ErrorText() const {
    return handle_ != nullptr ? pam_strerror(handle_, status_) : "cannot start";
  }

 private:
  template <typename Action>
  void Step(Action action) {
    if (status_ == PAM_SUCCESS) {
      status_ = action();
    }
  }

  // A module may have put another user in the place of the one who was asked for;
  // the session would be for the wrong one.
  bool IsStill(const char* user) const {
    const void* item = nullptr;
    return pam_get_item(handle_, PAM_USER, &item) == PAM_SUCCESS && item != nullptr &&
           std::strcmp(static_cast<const char*>(item), user) == 0;
  }

  pam_conv conversation_;
  pam_handle_t* handle_ = nullptr;
  int status_;
};

// Unavailable is only what surely is no judgement of the password: an attempt that
// ends so is not counted.
PasswordResult ToResult(int status) {
  switch (status) {
    case PAM_SUCCESS:
      return PasswordResult::kAccepted;
    case PAM_OPEN_ERR:
    case PAM_SYMBOL_ERR:
    case PAM_MODULE_UNKNOWN:
    case PAM_BUF_ERR:
    case PAM_ABORT:
      return PasswordResult::kUnavailable;
    // Of several modules one may have refused before another was out of order.
    case PAM_AUTHINFO_UNAVAIL:
      return PasswordResult::kUndecided;
    default:
      return PasswordResult::kRefused;
  }
}

}  // namespace

PasswordResult AskPamService(const char* directory, const char* user, const char* password,
                             const char* address) {
  Conversation conversation(directory, user, password);
  const int status = conversation.Run(user, address);
  if (status != PAM_SUCCESS) {
    Log(LOG_AUTHPRIV | LOG_NOTICE, "%s:%d service %s: %s", kSource, __LINE__, kService,
        conversation.ErrorText());
  }
  return ToResult(status);
}

}  // namespace ORBO
