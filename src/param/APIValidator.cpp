#include <webapi/APIValidator.h>

#include <atomic>
#include <mutex>

#include "param/APIValidatorPrivate.h"

namespace ORBO {
namespace {

// Both are constants at load time: nothing runs in a process that checks no
// pattern.
std::atomic<APIValidator*> instance{nullptr};
std::mutex instance_mutex;

// Compiled exactly as they stand.  Within brackets a backslash is an ordinary
// character, so "+-\" is the range from "+" to "\".
constexpr char kFarlinkIdPattern[] = "^([a-zA-Z0-9-]+)$";
constexpr char kDigitPattern[] = "^([0-9]+)$";
constexpr char kWorkGroupPattern[] = R"re([^][;:"<>*+\/|?,])re";
constexpr char kNetbiosPattern[] = "^[a-zA-Z][_a-zA-Z0-9-]{0,254}$";
constexpr char kEMailPattern[] =
    R"re(^[a-zA-Z0-9!#$%&'*+-\/?^_`{|}~\.",()<=>]+@([a-zA-Z0-9_&%!#+-\.]+)$)re";

}  // namespace

APIValidator::APIValidator() : private_(std::make_unique<APIValidatorPrivate>()) {}

APIValidator::~APIValidator() = default;

APIValidator* APIValidator::GetInstance() {
  APIValidator* validator = instance.load(std::memory_order_acquire);
  if (validator != nullptr) {
    return validator;
  }
  const std::lock_guard<std::mutex> lock(instance_mutex);
  validator = instance.load(std::memory_order_relaxed);
  if (validator == nullptr) {
    // Never destroyed, so that checks work until the very end of the process.
    validator = new APIValidator;
    instance.store(validator, std::memory_order_release);
  }
  return validator;
}

bool APIValidator::CheckRegex(const std::string& value, const char* pattern) {
  APIValidator* const validator = GetInstance();
  return validator != nullptr && validator->private_->CheckRegex(value, pattern);
}

bool APIValidator::IsFarlinkId(const std::string& value) {
  return CheckRegex(value, kFarlinkIdPattern);
}

bool APIValidator::IsDigit(const std::string& value) { return CheckRegex(value, kDigitPattern); }

bool APIValidator::IsWorkGroup(const std::string& value) {
  return !value.empty() && CheckRegex(value, kWorkGroupPattern);
}

bool APIValidator::IsNetbios(const std::string& value) {
  return !value.empty() && CheckRegex(value, kNetbiosPattern);
}

bool APIValidator::IsEMail(const std::string& value) {
  return !value.empty() && CheckRegex(value, kEMailPattern);
}

}  // namespace ORBO
