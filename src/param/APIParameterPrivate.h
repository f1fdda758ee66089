#pragma once

namespace ORBO {

template <typename T>
struct APIParameterPrivate {
  bool set = false;         // present in the request, or filled by SetDefault
  bool reset = false;       // present as JSON null
  bool invalid = false;     // required but missing, of the wrong type or range, or refused
  T value{};                // the zero of T until a conversion or a default succeeds
  bool is_default = false;  // the value came from SetDefault
};

}  // namespace ORBO
