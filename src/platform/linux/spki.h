#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// Public keys on the curve P-256 as clients exchange them: SubjectPublicKeyInfo (RFC
// 5480) in DER, with the point uncompressed.

std::string SpkiOfPoint(std::string_view point);

// The point, of which is not known whether it lies on the curve; "" for anything else
// than such a key.
std::string PointOfSpki(std::string_view spki);

}  // namespace ORBO
