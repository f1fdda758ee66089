// A handler library that cannot be made: the constructor of a static object throws.

#include <webapi/APITable.h>

#include <stdexcept>

namespace {

struct Throwing {
  Throwing() { throw std::runtime_error("on purpose"); }
} object;

ORBO::_tag_API_TABLE methods[] = {{nullptr, 0, nullptr, nullptr}};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
