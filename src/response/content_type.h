#pragma once

namespace ORBO {

// The header that names the type of an answer, in the spelling that the response keeps
// it under, and what it holds until a handler sets another.
inline constexpr char kContentTypeHeader[] = "Content-type";
inline constexpr char kDefaultContentType[] = "application/json; charset=\"UTF-8\"";

}  // namespace ORBO
