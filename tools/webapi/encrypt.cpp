#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Arguments.h"
#include "output.h"
#include "platform/cipher.h"
#include "platform/linux/base64url.h"
#include "platform/linux/cleanse.h"
#include "platform/linux/parameter_key.h"
#include "platform/linux/parameter_seal.h"
#include "platform/linux/wall_clock.h"
#include "public_key.h"
#include "util/read_file.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {
    {"form", "FORM", "cipher: one parameter; aes: a token and a text (default: cipher)"},
    {"key-file", "FILE", "the public key of another server, in PEM"},
    {"spki", "TEXT", "the same as ORBO.ParameterKey tells it, or in base64"},
    kNoMoreOptions,
};

constexpr char kDetails[] =
    "\n"
    "LINE is a line of parameters, name=value&name=value, with the values escaped; \"-\"\n"
    "reads it from the standard input, where other users of the machine do not see it.\n"
    "What is printed goes into a query or a form, once and within five minutes.\n"
    "Without a key of another server the current one of this system is taken, which is\n"
    "made where there is none.\n"
    "\n"
    "Examples:\n"
    "  curl -d \"$(webapi encrypt 'api=ORBO.Example.Greeting&version=1&method=hello')\" URL\n"
    "  webapi encrypt --form aes - < parameters\n";

constexpr unsigned long long kLongestLine = 16ULL << 20;

// False, and the reason in `complaint`, if there is no line.
bool ReadParameterLine(const std::string& operand, std::string& line, std::string& complaint) {
  if (operand != "-") {
    line = operand;
    return true;
  }
  if (!ReadUpTo(STDIN_FILENO, kLongestLine + 1, line)) {
    complaint = std::string("cannot read the standard input: ") + std::strerror(errno);
  } else if (line.size() > kLongestLine) {
    complaint = "the line is longer than 16 MiB";
  } else if (line.find('\0') != std::string::npos) {
    complaint = "the line has a NUL";
  } else {
    line.resize(line.size() - (!line.empty() && line.back() == '\n' ? 1 : 0));
    return true;
  }
  return false;
}

// The public key that the arguments name, in DER.
bool ReadKey(const Arguments& arguments, std::string& spki, std::string& complaint) {
  if (arguments.Has("key-file")) {
    return ReadKeyFile(arguments.Value("key-file", ""), spki, complaint);
  }
  return ReadKeyText(arguments.Value("spki", ""), spki, complaint);
}

bool Seal(const std::string& form, const std::string& spki, const std::string& line,
          std::string& out) {
  std::string token;
  std::string text;
  if (form == "cipher" ? !SealAsText(spki, line, WallClock(), text)
                       : !SealAsPair(spki, line, WallClock(), token, text)) {
    return false;
  }
  out = form == "cipher"
            ? std::string(kCipherTextMember) + "=" + text
            : std::string(kKeyTokenMember) + "=" + token + "&" + kKeyedTextMember + "=" + text;
  return true;
}

ExitCode Run(const Arguments& arguments) {
  const std::string form = arguments.Value("form", "cipher");
  if (form != "cipher" && form != "aes") {
    return ComplainOfUsage("not a form: " + form);
  }
  if (arguments.Has("key-file") && arguments.Has("spki")) {
    return ComplainOfUsage("--key-file and --spki exclude each other");
  }
  SecretText line;
  std::string spki;
  std::string complaint;
  if (!ReadParameterLine(arguments.operands().front(), line.text, complaint)) {
    Complain(complaint);
    return kFailed;
  }
  if (arguments.Has("key-file") || arguments.Has("spki")) {
    if (!ReadKey(arguments, spki, complaint)) {
      Complain(complaint);
      return kFailed;
    }
  } else {
    ParameterKey key;
    if (!CurrentParameterKey(key)) {
      return ComplainOfFailure("use the key", errno);
    }
    DecodeBase64Url(key.spki, spki);
  }
  std::string out;
  if (!Seal(form, spki, line.text, out)) {
    Complain("no key on the curve P-256, or no module to use it; see the system log");
    return kFailed;
  }
  return Print(out + "\n") ? kDone : kFailed;
}

}  // namespace

const Command kEncrypt = {
    "encrypt", "Enciphers parameters as a client does", "LINE", 1, 1, kOptions, kDetails, Run,
    nullptr};

}  // namespace ORBO::tool
