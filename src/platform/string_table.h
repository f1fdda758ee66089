#pragma once

#include <map>
#include <string>

// A table of texts by name: what the platform read of a request.
struct QLIBSZHASH {
  std::map<std::string, std::string> pairs;
};

// A new empty table; `slots` is a hint.  The caller frees it by QLIBCSzHashFree.
// Null where there is no memory.
QLIBSZHASH* QLIBCSzHashAlloc(int slots);

// Frees a table; null is none.
void QLIBCSzHashFree(QLIBSZHASH* table);

// Empties a table; null is none.
void QLIBCHashRemoveAll(QLIBSZHASH* table);
