// A handler library whose faults show when it is examined, and one that misbehaves as
// soon as it is opened where TEST_MODULE_FAULT says how.

#include <unistd.h>
#include <webapi/APITable.h>

#include <cstdlib>
#include <string_view>

void DefinedNowhere(ORBO::APIRequest* request, ORBO::APIResponse* response);

namespace {

void Call(ORBO::APIRequest* request, ORBO::APIResponse* response) {
  DefinedNowhere(request, response);
}

bool Pass(ORBO::APIRequest* /*request*/, ORBO::APIResponse* /*response*/) { return true; }

__attribute__((constructor)) void Misbehave() {
  const char* const fault = std::getenv("TEST_MODULE_FAULT");
  const std::string_view kind = fault != nullptr ? fault : "";
  if (kind == "crash") {
    std::abort();
  } else if (kind == "exit") {
    std::exit(3);
  } else if (kind == "hang") {
    sleep(600);
  }
}

ORBO::_tag_API_TABLE methods[] = {
    {"ORBO.T", 1, "m", Call},       {"ORBO.T", 1, "m", Call}, {"ORBO.T", 1, "empty", nullptr},
    {"ORBO.T", 1, "hidden", Call},  {"ORBO.T", 2, "m", Call}, {"ORBO.Else", 1, "m", Call},
    {nullptr, 0, nullptr, nullptr},
};

ORBO::_tag_API_CHECK_TABLE checks[] = {
    {"ORBO.T", 1, "gone", Pass, nullptr, nullptr},
    {nullptr, 0, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_CHECK_TABLE* GetAPICheckTable() { return checks; }
ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
