#pragma once

#include <string>

namespace oxr::rec {

// A file that is not whole yet: a new one beside its later place, "NAME.12345.part" with the number of the process. It
// goes with the object unless it got its name. Its own name stands where removeTemporaryFiles() finds it meanwhile.
class TemporaryFile {
 public:
  // None.
  TemporaryFile() = default;
  // For a file that is to be `target`.
  explicit TemporaryFile(std::string target);
  TemporaryFile(TemporaryFile&& other) noexcept;
  TemporaryFile& operator=(TemporaryFile&& other) noexcept;
  ~TemporaryFile() { discard(); }

  // For writing; the caller closes it. Negative, with errno, if the system refused.
  int descriptor() const { return fd_; }
  // Gives the file its name. False, with errno, if the system refuses.
  bool keep();

 private:
  void discard();

  std::string target_;
  std::string path_;  // empty if there is none, or if it has its name
  int fd_ = -1;
};

// Removes all temporary files of the process. For a handler of signals: it calls nothing that such a handler must not.
void removeTemporaryFiles() noexcept;

}  // namespace oxr::rec
