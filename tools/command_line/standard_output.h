// The standard output of the process, checked: a result that did not arrive is no result.
#pragma once

#include <cstddef>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

namespace rdv::tools {

// What is printed could not be delivered. what() is the system's text.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A stream whose insertions and flush() raise OutputError when the system refuses to take what was
// printed: a full disk, a closed descriptor. Where the reader of a pipe has gone, nobody misses the
// rest: it is dropped without a word, and the program goes on to its exit code. Not buffered output
// of the C library must not be mixed with it. UTF-8, lines end in a line feed everywhere. One
// thread.
class StandardOutput : public std::ostream {
 public:
  StandardOutput();
  // What was not flushed is written once more, without an error.
  ~StandardOutput() override;
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

  // Nobody reads any more: what only prints may stop.
  bool ReaderGone() const { return buffer_.reader_gone; }

 private:
  struct Buffer : std::streambuf {
    Buffer();
    int_type overflow(int_type unit) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    int sync() override;
    void Deliver(const char* text, size_t size);

    std::vector<char> waiting;
    bool reader_gone = false;
  };

  Buffer buffer_;
};

// Brings out what tells of something that is done already. What nobody is told of is there all the
// same: raises std::runtime_error that begins with `done` when the output cannot be written.
void RequireTold(std::ostream& out, const char* done = "the change is written");

// Raised by StopWithoutReader.
struct ReaderGone {};

// For work that only prints: ends it, with exit code 0, when `out` is a StandardOutput whose reader
// has gone.
void StopWithoutReader(const std::ostream& out);

}  // namespace rdv::tools
