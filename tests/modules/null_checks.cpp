// A handler library with methods and a check table that is not there.

#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

namespace {

void Get(ORBO::APIRequest* /*request*/, ORBO::APIResponse* response) { response->SetSuccess(); }

ORBO::_tag_API_TABLE methods[] = {
    {"ORBO.Test.NullChecks", 1, "get", Get},
    {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
ORBO::_tag_API_CHECK_TABLE* GetAPICheckTable() { return nullptr; }
