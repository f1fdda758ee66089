// A handler library whose tables are not there.

#include <webapi/APITable.h>

ORBO::_tag_API_TABLE* GetAPITable() { return nullptr; }
ORBO::_tag_API_CHECK_TABLE* GetAPICheckTable() { return nullptr; }
