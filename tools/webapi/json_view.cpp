#include "json_view.h"

#include <unistd.h>

#include <string>

#include "output.h"
#include "printable.h"
#include "util/json_text.h"

namespace ORBO::tool {
namespace {

constexpr char kNameColour[] = "\x1b[34m";
constexpr char kTextColour[] = "\x1b[32m";
constexpr char kNumberColour[] = "\x1b[36m";
constexpr char kWordColour[] = "\x1b[35m";
constexpr char kPlain[] = "\x1b[0m";

const char* ColourOf(const Json::Value& value) {
  switch (value.type()) {
    case Json::stringValue:
      return kTextColour;
    case Json::nullValue:
    case Json::booleanValue:
      return kWordColour;
    default:
      return kNumberColour;
  }
}

std::string Scalar(const Json::Value& value, const char* colour, bool colours) {
  const std::string text = Printable(JSON::ToText(value));
  return colours ? colour + text + kPlain : text;
}

void Append(const Json::Value& value, bool colours, const std::string& indent, std::string& out) {
  const bool is_object = value.type() == Json::objectValue;
  if ((!is_object && value.type() != Json::arrayValue) || value.empty()) {
    out += Scalar(value, ColourOf(value), colours);
    return;
  }
  const std::string deeper = indent + "  ";
  const char* separator = is_object ? "{\n" : "[\n";
  for (auto member = value.begin(); member != value.end(); ++member) {
    out += separator + deeper;
    if (is_object) {
      out += Scalar(member.name(), kNameColour, colours) + ": ";
    }
    Append(*member, colours, deeper, out);
    separator = ",\n";
  }
  out += "\n" + indent + (is_object ? "}" : "]");
}

}  // namespace

bool PrintDocument(const Json::Value& value) {
  if (isatty(STDOUT_FILENO) != 1) {
    return PrintJson(value) == kDone;
  }
  std::string text;
  Append(value, HasColours(), "", text);
  return Print(text + "\n");
}

}  // namespace ORBO::tool
