#include "platform/string_table.h"

#include <memory>
#include <new>

QLIBSZHASH* QLIBCSzHashAlloc(int /*slots*/) {
  try {
    return std::make_unique<QLIBSZHASH>().release();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void QLIBCSzHashFree(QLIBSZHASH* table) { const std::unique_ptr<QLIBSZHASH> owned(table); }

void QLIBCHashRemoveAll(QLIBSZHASH* table) {
  if (table != nullptr) {
    table->pairs.clear();
  }
}
