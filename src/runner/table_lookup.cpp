#include "runner/table_lookup.h"

namespace ORBO {
namespace {

// The first row for `call`, or the terminator.
template <typename Row>
const Row* FindRow(const Row* row, const CallName& call) {
  while (row->api != nullptr && !(call.version == row->version && call.api == row->api &&
                                  row->method != nullptr && call.method == row->method)) {
    ++row;
  }
  return row;
}

}  // namespace

const _tag_API_TABLE* FindHandler(const _tag_API_TABLE* table, const CallName& call) {
  const _tag_API_TABLE* row = FindRow(table, call);
  return row->api == nullptr || row->handler == nullptr ? nullptr : row;
}

const _tag_API_CHECK_TABLE* FindCheck(const _tag_API_CHECK_TABLE* table, const CallName& call) {
  return table == nullptr ? nullptr : FindRow(table, call);
}

}  // namespace ORBO
