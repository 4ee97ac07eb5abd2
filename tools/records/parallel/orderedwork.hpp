#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <optional>
#include <thread>
#include <vector>

namespace oxr::rec {

// Work on several threads whose results come in the order of the pieces.
//
// A thread takes a piece, which happens one after the other, works on it beside the others, and puts the result in its
// place. The caller's thread takes the results in order. No thread is more than a few pieces ahead of the caller, so
// that memory stays the same however much there is to do.
//
// What taking a piece or working on it throws comes out of the caller's run() when that piece's turn has come: all
// results before it are given.
template <class Piece, class Result>
class OrderedWork {
 public:
  // `take` gives the next piece, nothing at the end.
  using Take = std::function<std::optional<Piece>()>;
  // One for each thread: works on a piece.
  using Worker = std::function<Result(Piece)>;
  // Gets a result; false if no more are wanted.
  using Give = std::function<bool(Result)>;

  OrderedWork(Take take, Give give) : take_(std::move(take)), give_(std::move(give)) {}

  // Works with a thread for each of the workers, and returns when none of them is at work any more.
  void run(std::vector<Worker> workers) {
    room_ = kAhead * workers.size();
    {
      std::vector<std::jthread> threads;
      threads.reserve(workers.size());
      const Stopper stopper{*this};  // goes before the threads, which then end
      for (Worker& worker : workers)
        threads.emplace_back([this, &worker] { work(worker); });
      giveAll();
    }
  }

 private:
  static constexpr std::size_t kAhead = 3;  // pieces a thread

  struct Place {
    std::optional<Result> result;
    std::exception_ptr failure;
    bool isDone = false;
  };
  struct Stopper {
    OrderedWork& work;
    ~Stopper() { work.stop(); }
  };

  void stop() {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
    changed_.notify_all();
  }

  void work(Worker& worker) {
    Place* place = nullptr;
    while (std::optional<Piece> piece = nextPiece(place)) {
      Place done;
      try {
        done.result.emplace(worker(std::move(*piece)));
      } catch (...) {
        done.failure = std::current_exception();
      }
      finish(*place, std::move(done));
    }
  }

  // The next piece and its place. The place is made before the piece is taken, and no other thread takes one meanwhile.
  std::optional<Piece> nextPiece(Place*& place) {
    const std::lock_guard turn(taking_);
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return isStopped_ || places_.size() < room_; });
      if (isStopped_ || isAtEnd_) return std::nullopt;
      place = newPlace();
      if (place == nullptr) return std::nullopt;
    }
    std::optional<Piece> piece;
    Place end;
    try {
      piece = take_();
    } catch (...) {
      end.failure = std::current_exception();
    }
    if (piece) return piece;
    {
      const std::lock_guard lock(mutex_);
      isAtEnd_ = true;
    }
    finish(*place, std::move(end));
    return std::nullopt;
  }

  // Null if memory runs out: the caller's thread then ends the work. The lock is held.
  Place* newPlace() {
    try {
      return &places_.emplace_back();
    } catch (const std::bad_alloc&) {
      isStopped_ = isOutOfMemory_ = true;
      changed_.notify_all();
      return nullptr;
    }
  }

  void finish(Place& place, Place done) {
    const std::lock_guard lock(mutex_);
    place = std::move(done);
    place.isDone = true;
    changed_.notify_all();
  }

  // Takes the results until the place of the end, which has none.
  void giveAll() {
    for (;;) {
      Place place;
      {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return isOutOfMemory_ || (!places_.empty() && places_.front().isDone); });
        if (isOutOfMemory_) throw std::bad_alloc();
        place = std::move(places_.front());
        places_.pop_front();
        changed_.notify_all();
      }
      if (place.failure) std::rethrow_exception(place.failure);
      if (!place.result || !give_(std::move(*place.result))) return;
    }
  }

  const Take take_;
  const Give give_;
  std::mutex taking_;  // held while a piece is taken
  std::mutex mutex_;   // of what follows
  std::condition_variable changed_;
  std::deque<Place> places_;  // of the pieces that were taken and not given; an element stays where it is
  std::size_t room_ = 0;
  bool isAtEnd_ = false;
  bool isStopped_ = false;
  bool isOutOfMemory_ = false;
};

}  // namespace oxr::rec
