#include "fuzz/allocation/allocator.hpp"

#include <execinfo.h>
#include <pthread.h>
#include <unicode/uclean.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <new>

// What the C library has under names that nobody replaces.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);
}

namespace oxr::test {
namespace {

constinit FailurePlan plan;
constinit FailureCount counted;
constinit bool isFailing = false;
constinit LivingBlocks living;

bool mustFail(AllocationWay way) {
  if (!isFailing || (plan.ways & way) == 0) return false;
  ++counted.allocations;
  if (counted.allocations != plan.point && !(plan.lasting && counted.allocations > plan.point)) return false;
  if (!counted.failed) {
    const Unfailing unfailing;
    counted.failed = true;
    counted.where.take();
  }
  return true;
}

long& livingOf(AllocationWay way) {
  return way == kIcu ? living.icu : living.others;
}

void* fresh(void* block, AllocationWay way = kMalloc) {
  if (block != nullptr) ++livingOf(way);
  return block;
}
void* refused() {
  errno = ENOMEM;
  return nullptr;
}
void* allocated(AllocationWay way, std::size_t size) {
  return mustFail(way) ? refused() : fresh(__libc_malloc(size), way);
}
void* reallocated(AllocationWay way, void* block, std::size_t size) {
  if (block == nullptr) return allocated(way, size);
  if (mustFail(way)) return refused();
  void* const moved = __libc_realloc(block, size);
  if (moved == nullptr && size == 0) --livingOf(way);
  return moved;
}
void released(void* block, AllocationWay way = kMalloc) {
  if (block != nullptr) --livingOf(way);
  __libc_free(block);
}
void* newed(std::size_t size) {
  if (void* const block = allocated(kNew, size != 0 ? size : 1)) return block;
  throw std::bad_alloc();
}

}  // namespace

void CallStack::take() {
  depth = backtrace(calls.data(), static_cast<int>(calls.size()));
}

void giveIcuItsMemory() {
  UErrorCode status = U_ZERO_ERROR;
  u_setMemoryFunctions(
      nullptr, [](const void*, std::size_t size) { return allocated(kIcu, size); },
      [](const void*, void* block, std::size_t size) { return reallocated(kIcu, block, size); },
      [](const void*, void* block) { released(block, kIcu); }, &status);
  if (U_FAILURE(status)) std::abort();
}

void startFailing(const FailurePlan& next) {
  plan = next;
  counted = {};
  isFailing = true;
}
const FailureCount& stopFailing() {
  isFailing = false;
  return counted;
}
LivingBlocks livingBlocks() {
  return living;
}

Unfailing::Unfailing() : wasFailing_(isFailing) {
  isFailing = false;
}
Unfailing::~Unfailing() {
  isFailing = wasFailing_;
}

}  // namespace oxr::test

using namespace oxr::test;

// Seen by the libraries, too.
#pragma GCC visibility push(default)
extern "C" {

void* malloc(std::size_t size) {
  return allocated(kMalloc, size);
}
void* calloc(std::size_t count, std::size_t size) {
  return mustFail(kMalloc) ? refused() : fresh(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) {
  return reallocated(kMalloc, block, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
  return mustFail(kMalloc) ? refused() : fresh(__libc_memalign(alignment, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  void* const made = memalign(alignment, size);
  if (made == nullptr) return ENOMEM;
  *block = made;
  return 0;
}
void free(void* block) {
  released(block);
}

// There is one thread: one that finds a mutex locked would wait for ever.
int pthread_mutex_lock(pthread_mutex_t* mutex) {
  const int code = pthread_mutex_trylock(mutex);
  if (code == EBUSY) std::raise(SIGALRM);
  return code;
}

}  // extern "C"
#pragma GCC visibility pop

void* operator new(std::size_t size) {
  return newed(size);
}
void* operator new[](std::size_t size) {
  return newed(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocated(kNew, size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocated(kNew, size);
}
void operator delete(void* block) noexcept {
  released(block);
}
void operator delete[](void* block) noexcept {
  released(block);
}
void operator delete(void* block, std::size_t) noexcept {
  released(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  released(block);
}
