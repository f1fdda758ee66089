#include <unistd.h>

#include <webapi/WebEntry.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "entry/http_header.h"
#include "platform/confinement.h"
#include "platform/process.h"
#include "response/APIResponsePrivate.h"
#include "util/exception_text.h"
#include "util/hat_token.h"
#include "util/json_text.h"
#include "util/log.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "WebEntry.cpp";
constexpr int kEnterHatLine = 799;  // prescribed for these two messages
constexpr int kLeaveHatLine = 810;
constexpr unsigned kCallbackDelay = 1;  // seconds in which the answer reaches the client

// Written to the stream object, like the output of handlers, so that the order
// is kept.
void Write(const std::string& text) {
  // What a handler did to the stream must neither hold the answer back nor make
  // it throw.
  std::cout.exceptions(std::ios::goodbit);
  std::cout.clear();
  std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
}

std::string BodyText(const Json::Value& body) {
  std::string text;
  JSON::Append(body, text);
  text += '\n';
  return text;
}

// Runs the callbacks; a callback that throws does not keep the others from
// running.
void RunCallbacks(const APIResponsePrivate::CallbackList& callbacks) {
  for (const auto& [function, argument] : callbacks) {
    try {
      function(argument);
    } catch (...) {
      Log(LOG_ERR, "%s:%d callback ended by an exception: %s", kSource, __LINE__,
          CurrentExceptionText().c_str());
    }
  }
}

[[noreturn]] void RunDetached(const APIResponsePrivate::CallbackList& callbacks) {
  setsid();
  sleep(kCallbackDelay);
  const bool confined = ORBO_aa_has_profile_restricted() != 0;
  if (confined && ORBO_aa_change_hat("DefaultHat", kHatToken) != 0) {
    Log(LOG_ERR, "%s:%d AppArmor: chagehat failed [%s]", kSource, kEnterHatLine,
        std::strerror(errno));
  }
  RunCallbacks(callbacks);
  if (confined && ORBO_aa_change_hat(nullptr, kHatToken) != 0) {
    Log(LOG_ERR, "%s:%d AppArmor: chagehat Original Hat failed [%s]", kSource, kLeaveHatLine,
        std::strerror(errno));
  }
  std::exit(0);
}

}  // namespace

void WebEntry::OutputHeader() {
  Write(FormatHeaderBlock(response_->GetHeaders(), response_->GetCookies()));
}

void WebEntry::OutputBody() {
  Write(BodyText(response_->private_->Body()));
  std::cout.flush();
}

void WebEntry::OutputAnswer(bool& is_answered) {
  // Both texts before either is written: a header without its body is no answer.
  const std::string header = FormatHeaderBlock(response_->GetHeaders(), response_->GetCookies());
  const std::string body = BodyText(response_->private_->Body());
  is_answered = true;
  Write(header);
  Write(body);
  std::cout.flush();
}

int WebEntry::HandleCallback(APIResponse* response) {
  if (response == nullptr) {
    return 0;
  }
  const APIResponsePrivate::CallbackList& callbacks = *response->private_->GetCallbackFuncs();
  if (callbacks.empty()) {
    return 0;
  }
  const pid_t child = QLIBCProcFork();
  if (child == 0) {
    RunDetached(callbacks);
  }
  return child;
}

void RestartHttpd(void* /*argument*/) { QLIBNetService(kNetServiceHttpd, kNetServiceRestart, 0); }

}  // namespace ORBO
