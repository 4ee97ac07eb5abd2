#include "records/program/process.hpp"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>

// Memory may run out before main() is reached: the libraries' own objects are made then, and the standard library takes
// room for the exceptions that tell of a lack of memory. Nobody could catch what is thrown there, and without that room
// nothing can be thrown at all. So the first code of the process looks whether there is enough for the start.

namespace oxr::rec {

namespace {

// What the start takes, with a margin: less than 300 KiB.
constexpr std::size_t kStartBytes = std::size_t{512} << 10;

// Without any memory of its own.
void tellOutOfMemory(const char* path) {
  const char* const slash = std::strrchr(path, '/');
  const char* const parts[] = {slash != nullptr ? slash + 1 : path, ": out of memory\n"};
  for (const char* const part : parts)
    if (::write(STDERR_FILENO, part, std::strlen(part)) < 0) return;
}

void requireMemoryToStart(int count, char** arguments, char**) {
  void* const room = std::malloc(kStartBytes);
  if (room == nullptr) {
    tellOutOfMemory(count > 0 ? arguments[0] : "");
    ::_exit(kFailed);
  }
  // The compiler may not leave out what has no effect that it can see.
  asm volatile("" : : "g"(room) : "memory");
  std::free(room);
}

// What the libraries log as an event comes out of them as an exception too, and the program tells that.
void logOnlyIfAsked() {
  constexpr const char* kLog = "KELHOST_LOG";
  if (std::getenv("KELHOST_TRACE_LEVEL") == nullptr) ::setenv(kLog, "none", 0);
}

// Called before the constructors of all libraries.
[[gnu::section(".preinit_array"), gnu::used]] void (*const kFirst)(int, char**, char**) = requireMemoryToStart;

}  // namespace

int runProcess(const Program& program, int count, const char* const* arguments) {
  logOnlyIfAsked();
  try {
    const Console console{STDIN_FILENO, STDOUT_FILENO, std::cerr, ::isatty(STDERR_FILENO) == 1};
    return runCommand(program, {arguments + (count > 0 ? 1 : 0), arguments + count}, console);
  } catch (const std::bad_alloc&) {
    tellOutOfMemory(program.name);
    return kFailed;
  }
}

}  // namespace oxr::rec
