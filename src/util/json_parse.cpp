#include <utility>

#include "util/json_scan.h"
#include "util/json_text.h"
#include "util/number_text.h"

// The packaged reader would cost several times as much: it builds an object of
// settings, reads reals through a stream and keeps comments and offsets.
namespace ORBO::JSON {
namespace {

// Builds the value of a text that the scanner has found well formed.  Recurses
// at most kMaxDepth deep.
class Builder {
 public:
  Builder(std::string_view text, Comments comments) : text_(text), comments_(comments) {
    SkipBlanks();
  }

  // Builds the value that begins here into `out`.  False if it holds a number
  // that no double is near.
  bool Build(Json::Value& out);

 private:
  char Here() const { return text_[position_]; }
  void SkipBlanks() { position_ = JSON::SkipBlanks(text_, position_, comments_); }
  void SkipMark() {
    ++position_;
    SkipBlanks();
  }
  std::string_view Take(std::size_t end);
  std::string_view TakeString() { return Take(SkipString(text_, position_)); }
  std::string_view TakeScalar() { return Take(SkipValue(text_, position_, comments_)); }
  bool BuildArray(Json::Value& out);
  bool BuildObject(Json::Value& out);

  std::string_view text_;
  Comments comments_;
  std::size_t position_ = 0;
};

bool HasEscape(std::string_view quoted) { return quoted.find('\\') != std::string_view::npos; }

Json::Value MakeString(std::string_view quoted) {
  return HasEscape(quoted) ? Json::Value(DecodeString(quoted))
                           : Json::Value(quoted.data() + 1, quoted.data() + quoted.size() - 1);
}

Json::Value& Member(Json::Value& object, std::string_view quoted) {
  if (!HasEscape(quoted)) {
    return *object.demand(quoted.data() + 1, quoted.data() + quoted.size() - 1);
  }
  const std::string name = DecodeString(quoted);
  return *object.demand(name.data(), name.data() + name.size());
}

bool BuildNumber(std::string_view text, Json::Value& out) {
  Integer integer;
  if (ReadInteger(text, integer)) {
    std::int64_t number = 0;
    if (ToSigned(integer, number)) {
      out = Json::Value(Json::Int64{number});
      return true;
    }
    if (!integer.negative) {
      out = Json::Value(Json::UInt64{integer.amount});
      return true;
    }
  }
  double real = 0;
  if (!ReadReal(text, real)) {
    return false;
  }
  out = Json::Value(real);
  return true;
}

std::string_view Builder::Take(std::size_t end) {
  const std::size_t begin = std::exchange(position_, end);
  return text_.substr(begin, end - begin);
}

bool Builder::BuildArray(Json::Value& out) {
  out = Json::Value(Json::arrayValue);
  SkipMark();
  while (Here() != ']') {
    if (!Build(out.append(Json::Value()))) {
      return false;
    }
    SkipBlanks();
    if (Here() == ',') {
      SkipMark();
    }
  }
  ++position_;
  return true;
}

bool Builder::BuildObject(Json::Value& out) {
  out = Json::Value(Json::objectValue);
  SkipMark();
  while (Here() != '}') {
    Json::Value& member = Member(out, TakeString());
    SkipBlanks();
    SkipMark();
    if (!Build(member)) {
      return false;
    }
    SkipBlanks();
    if (Here() == ',') {
      SkipMark();
    }
  }
  ++position_;
  return true;
}

bool Builder::Build(Json::Value& out) {
  switch (Here()) {
    case '{':
      return BuildObject(out);
    case '[':
      return BuildArray(out);
    case '"':
      out = MakeString(TakeString());
      return true;
    case 't':
    case 'f':
      out = Json::Value(TakeScalar() == "true");
      return true;
    case 'n':
      TakeScalar();
      out = Json::Value();
      return true;
    default:
      return BuildNumber(TakeScalar(), out);
  }
}

}  // namespace

bool Parse(std::string_view text, Json::Value& out, Comments comments) {
  Json::Value value;
  if (!IsJson(text, comments) || !Builder(text, comments).Build(value)) {
    return false;
  }
  out = std::move(value);
  return true;
}

}  // namespace ORBO::JSON
