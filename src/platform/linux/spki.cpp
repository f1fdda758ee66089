#include "platform/linux/spki.h"

#include "platform/linux/crypto.h"

namespace ORBO {
namespace {

// The whole structure up to the point, of which the last byte here is the form: all
// that could differ is the curve.
constexpr unsigned char kHead[] = {0x30, 0x59, 0x30, 0x13, 0x06, 0x07, 0x2a, 0x86, 0x48,
                                   0xce, 0x3d, 0x02, 0x01, 0x06, 0x08, 0x2a, 0x86, 0x48,
                                   0xce, 0x3d, 0x03, 0x01, 0x07, 0x03, 0x42, 0x00, 0x04};
constexpr std::size_t kFormSize = 1;

std::string_view Head() { return {reinterpret_cast<const char*>(kHead), sizeof kHead}; }

}  // namespace

std::string SpkiOfPoint(std::string_view point) {
  return std::string(Head()).append(point.substr(kFormSize));
}

std::string PointOfSpki(std::string_view spki) {
  const std::string_view head = Head();
  const bool is_known =
      spki.substr(0, head.size()) == head && spki.size() == head.size() - kFormSize + kPointSize;
  return is_known ? std::string(spki.substr(head.size() - kFormSize)) : "";
}

}  // namespace ORBO
