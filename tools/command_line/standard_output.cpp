#include "tools/command_line/standard_output.h"

#include <algorithm>
#include <cstring>

#include "runtime/system_error.h"
#include "runtime/text.h"
#include "tools/command_line/console.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>

#include <cerrno>
#include <csignal>
#endif

namespace rdv::tools {
namespace {

constexpr size_t kBufferSize = 64 * 1024;

enum class Delivery { Taken, ReaderGone };

#ifdef _WIN32

// The whole text, or an error.
Delivery Write(const char* text, size_t size) {
  const HANDLE out = GetStdHandle(STD_OUTPUT_HANDLE);
  static Console console(out);
  if (console.IsThere()) {
    if (console.Write({text, size})) return Delivery::Taken;
    throw OutputError(ToUtf8(SystemErrorText(GetLastError())));
  }
  while (size > 0) {
    DWORD taken = 0;
    constexpr size_t kPiece = 1u << 20;
    if (!WriteFile(out, text, static_cast<DWORD>(std::min(size, kPiece)), &taken, nullptr)) {
      const DWORD error = GetLastError();
      if (error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE) return Delivery::ReaderGone;
      throw OutputError(ToUtf8(SystemErrorText(error)));
    }
    text += taken;
    size -= taken;
  }
  return Delivery::Taken;
}

void ReportBrokenPipes() {}

#else

Delivery Write(const char* text, size_t size) {
  while (size > 0) {
    const ssize_t taken = write(STDOUT_FILENO, text, size);
    if (taken < 0) {
      if (errno == EINTR) continue;
      if (errno == EPIPE) return Delivery::ReaderGone;
      throw OutputError(ToUtf8(SystemErrorText(static_cast<uint32_t>(errno))));
    }
    text += taken;
    size -= static_cast<size_t>(taken);
  }
  return Delivery::Taken;
}

// As results of write() instead of the signal that ends the process in the middle of its work.
void ReportBrokenPipes() {
  signal(SIGPIPE, SIG_IGN);
}

#endif

}  // namespace

StandardOutput::Buffer::Buffer() {
  waiting.reserve(kBufferSize);
}

StandardOutput::Buffer::int_type StandardOutput::Buffer::overflow(int_type unit) {
  if (traits_type::eq_int_type(unit, traits_type::eof())) return traits_type::not_eof(unit);
  const char one = traits_type::to_char_type(unit);
  xsputn(&one, 1);
  return unit;
}

std::streamsize StandardOutput::Buffer::xsputn(const char* text, std::streamsize size) {
  const auto count = static_cast<size_t>(size);
  if (waiting.size() + count > kBufferSize) sync();
  if (count > kBufferSize) {
    Deliver(text, count);
  } else {
    waiting.insert(waiting.end(), text, text + count);
  }
  return size;
}

int StandardOutput::Buffer::sync() {
  // A text that was refused once is not offered again.
  std::vector<char> text;
  text.swap(waiting);
  waiting.reserve(kBufferSize);
  Deliver(text.data(), text.size());
  return 0;
}

void StandardOutput::Buffer::Deliver(const char* text, size_t size) {
  if (reader_gone || size == 0) return;
  reader_gone = Write(text, size) == Delivery::ReaderGone;
}

StandardOutput::StandardOutput() : std::ostream(nullptr) {
  ReportBrokenPipes();
  rdbuf(&buffer_);
  exceptions(std::ios::badbit);  // hands on what the buffer raises
}

StandardOutput::~StandardOutput() {
  try {
    buffer_.pubsync();
  } catch (const OutputError&) {
    // Whoever wants to know has flushed.
  }
}

void RequireTold(std::ostream& out, const char* done) {
  try {
    out.flush();
  } catch (const OutputError& error) {
    throw std::runtime_error(std::string(done) + "; the output cannot be written: " + error.what());
  }
}

void StopWithoutReader(const std::ostream& out) {
  const auto* const standard = dynamic_cast<const StandardOutput*>(&out);
  if (standard != nullptr && standard->ReaderGone()) throw rdv::tools::ReaderGone();
}

}  // namespace rdv::tools
