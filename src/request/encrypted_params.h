#pragma once

#include <json/value.h>

#include <string>

namespace ORBO {

// Enciphered request parameters.  Reserved members of a parameter object hold
// them; opening replaces those members by the plain pairs, which overwrite
// plain members of the same name:
//
//   "__cIpHeRtExT"    one enciphered parameter line
//   "__nEkOtReHpIc"   a token that the key of the next member derives from
//   "__tXeTrEhPiC"    an AES-enciphered parameter line
//   "webapi"          a nested parameter object under the same rules
//
// On failure the reserved members that were tried are gone and pairs already
// read stay, so that the call goes on without what could not be opened and its
// checks report the missing parameters.  Nothing is logged.

// Opens all forms in `params`, in the order above.  False on a failure.
bool DecryptParam(Json::Value& params);

// Opens the AES pair alone; true, and nothing changed, unless both members of
// the pair are there.
bool DecryptAESParam(Json::Value& params);

// Deciphers `text` and adds the pairs of its plain line to `params`.  False if
// either fails; `params` is unchanged then.
bool DecryptParamText(const std::string& text, Json::Value& params);

}  // namespace ORBO
