#pragma once

#include <pybind11/pybind11.h>

#include <cxxabi.h>

// Who holds the interpreter.
//
// A thread that is still at work when the process ends is ended by the interpreter where it takes hold of it again: by
// unwinding its stack, which ends the process with an error when it meets a destructor or whoever catches everything.
// Such a thread is held where it is instead. It has no interpreter then, so that nobody waits for it, and goes with the
// process.

namespace oxr::python {

[[noreturn]] void stayForEver();

// For calls that run code of Python, or take hold of the interpreter.
template <class Call>
auto orStay(Call call) {
  try {
    return call();
  } catch (const abi::__forced_unwind&) {
    stayForEver();
  }
}

// Lets other threads have the interpreter for as long as it lives.
class Released {
 public:
  Released() : state_(PyEval_SaveThread()) {}
  Released(const Released&) = delete;
  Released& operator=(const Released&) = delete;
  ~Released() {
    orStay([this] { PyEval_RestoreThread(state_); });
  }

 private:
  PyThreadState* const state_;
};

// Has the interpreter for as long as it lives, whether or not its thread had it before.
class Held {
 public:
  Held() : state_(orStay([] { return PyGILState_Ensure(); })) {}
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  ~Held() { PyGILState_Release(state_); }

 private:
  const PyGILState_STATE state_;
};

// Does what may take its time, as where it waits for another process or thread.
template <class Work>
auto released(Work work) {
  const Released interpreter;
  return work();
}

}  // namespace oxr::python
