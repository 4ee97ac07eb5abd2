#pragma once

#include <pybind11/pybind11.h>

#include <string>

namespace oxr::python {

// Whether an input is being read. Who reads lets other threads have the interpreter, and they may not read it too.
class Busy {
 public:
  // `what` is read, as in "these records".
  explicit Busy(const char* what) : what_(what) {}
  // Throws value_error while it is busy.
  void requireIdle() const {
    if (isBusy_) throw pybind11::value_error(std::string("another thread reads ") + what_);
  }

  // Makes it busy for as long as it lives; throws value_error if it is already.
  class Turn {
   public:
    explicit Turn(Busy& busy) : busy_(busy) {
      busy.requireIdle();
      busy.isBusy_ = true;
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() { busy_.isBusy_ = false; }

   private:
    Busy& busy_;
  };

 private:
  const char* const what_;
  bool isBusy_ = false;
};

}  // namespace oxr::python
