#include "platform/file_output.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <iostream>

#include "platform/linux/file_answer.h"
#include "platform/linux/lock_retry.h"
#include "platform/linux/send_content.h"
#include "util/Descriptor.h"
#include "util/HeldOutput.h"
#include "util/utf8.h"

namespace {

using ORBO::AnswerHead;
using ORBO::ByteRange;
using ORBO::Descriptor;
using ORBO::HeldOutput;

constexpr std::size_t kBufferSize = std::size_t{64} << 10;
// Longer than the kernel leaves a lease to its holder (lease-break-time, 45 s).
constexpr int kLeaseSeconds = 60;

// Opens `path` for reading, and waits for no pipe but for a lease: a file server that
// serves the file to another client writes back what that one has changed, and gives
// the lease up.
int OpenToSend(const char* path) {
  int file = -1;
  ORBO::RetryLock(kLeaseSeconds, [&file, path] {
    file = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    return file >= 0;
  });
  return file;
}

bool IsSendFileEnabled() {
  const char* const enabled = std::getenv("MOD_X_SENDFILE_ENABLED");
  return enabled != nullptr && strcasecmp(enabled, "yes") == 0;
}

// The path as the web server is to open it; empty where it cannot stand in the header
// as it is: some servers decode "%" or refuse malformed UTF-8, none keeps a blank at the
// end, and a control character has no place in a header.
std::string SendFilePath(const char* path) {
  char* const resolved = realpath(path, nullptr);
  if (resolved == nullptr) {
    return {};
  }
  std::string text = resolved;
  std::free(resolved);
  const bool is_read_alike =
      text.back() != ' ' && text.find('%') == std::string::npos && ORBO::UTF8::IsPrintable(text);
  return is_read_alike ? text : std::string();
}

std::string Hexadecimal(unsigned long long number) {
  char text[2 * sizeof number + 1];
  return std::string(text,
                     static_cast<std::size_t>(std::snprintf(text, sizeof text, "%llx", number)));
}

// The device is left out: its number may change from start to start of the system.
ORBO::Validators ValidatorsOf(const struct stat& status, std::uint64_t offset) {
  const auto part = [](auto number) {
    return Hexadecimal(static_cast<unsigned long long>(number));
  };
  std::string etag = "\"" + part(status.st_ino) + "-" + part(status.st_size) + "-" +
                     part(status.st_mtim.tv_sec) + "." + part(status.st_mtim.tv_nsec);
  if (offset != 0) {
    etag += "-" + part(offset);
  }
  // No client takes a date in the future for one.
  return {etag + "\"", std::min(status.st_mtim.tv_sec, std::time(nullptr))};
}

// Writes the rest of the head after what is held already; false if it does not reach
// the web server.
bool WriteHead(AnswerHead& head) {
  std::cout << head.Finish() << std::flush;
  return std::fflush(stdout) == 0 && std::cout.good();
}

// `send_file_path` is empty where the content is not the web server's.
int OutputRegularFile(int file, std::uint64_t offset, const std::string& send_file_path,
                      const struct stat& status, const char* mime_type) {
  const auto end = static_cast<std::uint64_t>(status.st_size);
  AnswerHead head(HeldOutput::Of(std::cout));
  AddCommonHeaders(mime_type, head);
  ORBO::Validators validators = ValidatorsOf(status, offset);
  ByteRange part;
  if (!AnswerConditions(validators, head)) {
    if (send_file_path.empty()) {
      part = AnswerContent(end - std::min(end, offset), validators, head);
    } else {
      head.Add("X-Sendfile", send_file_path);
    }
  }
  return WriteHead(head) && ORBO::SendContent(STDOUT_FILENO, file, offset + part.first, part.length)
             ? kFileOutputDone
             : kFileOutputBrokenOff;
}

// The first piece is read before the head is written: a stream that cannot be read
// leaves another answer possible.
int OutputStream(std::FILE* file, const char* mime_type) {
  char buffer[kBufferSize];
  std::size_t count = std::fread(buffer, 1, sizeof buffer, file);
  if (std::ferror(file) != 0) {
    return -EIO;
  }
  AnswerHead head(HeldOutput::Of(std::cout));
  AddCommonHeaders(mime_type, head);
  const char* const method = std::getenv("REQUEST_METHOD");
  bool is_sent = WriteHead(head);
  if (method != nullptr && std::string_view(method) == "HEAD") {
    return is_sent ? kFileOutputDone : kFileOutputBrokenOff;
  }
  while (is_sent && count > 0) {
    is_sent = ORBO::SendBytes(STDOUT_FILENO, buffer, count);
    count = is_sent ? std::fread(buffer, 1, sizeof buffer, file) : 0;
  }
  return is_sent && std::ferror(file) == 0 ? kFileOutputDone : kFileOutputBrokenOff;
}

}  // namespace

int HTTPFileOutputer::Output(const char* path, const char* mime_type) {
  if (path == nullptr) {
    return -EINVAL;
  }
  const Descriptor file(OpenToSend(path));
  struct stat status {};
  if (!file.IsOpen() || fstat(file.get(), &status) != 0) {
    return -errno;
  }
  if (!S_ISREG(status.st_mode)) {
    return S_ISDIR(status.st_mode) ? -EISDIR : -EINVAL;
  }
  const ORBO::BrokenPipeGuard guard;
  // Of a server that adds the content nobody knows what it makes of another status.
  const bool is_plain = !AnswerHead(HeldOutput::Of(std::cout)).Has("Status");
  const std::string served = is_plain && IsSendFileEnabled() ? SendFilePath(path) : std::string();
  return OutputRegularFile(file.get(), 0, served, status, mime_type);
}

int HTTPFileOutputer::Output(std::FILE* file, const char* /*file_name*/, const char* mime_type) {
  if (file == nullptr) {
    return -EINVAL;
  }
  const ORBO::BrokenPipeGuard guard;
  const int descriptor = fileno(file);
  struct stat status {};
  if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    return OutputStream(file, mime_type);
  }
  const off_t position = ftello(file);
  if (position < 0) {
    return -errno;
  }
  if ((fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_WRONLY) {
    return -EBADF;
  }
  return OutputRegularFile(descriptor, static_cast<std::uint64_t>(position), "", status, mime_type);
}
