// Pieces of work that several threads need, in about the order of their numbers: none waits while there is one to begin.
#ifndef KELVO_HOST_SHARED_PIECES_H
#define KELVO_HOST_SHARED_PIECES_H

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

namespace kelvo::host {

// The pieces that are wanted and not done, by number from 0. A piece that is done is forgotten: to want it again must be
// cheap.
class SharedPieces {
 public:
  explicit SharedPieces(int64_t count) : count_(count) {}

  // What these pieces still lack is to be done, by whomever.
  void Want(const std::vector<int64_t>& pieces);

  // A piece for the caller to do and then to end: one of `own` if it can be, else one that another thread wants, else the
  // one that follows all that were wanted, which is for nothing where nobody comes to want it. Waits while all have been
  // begun. Nothing once all of `own` are done.
  std::optional<int64_t> Begin(const std::vector<int64_t>& own);

  // Also if the piece failed.
  void End(int64_t number);

 private:
  struct Piece {
    int64_t number;
    bool begun;
  };

  Piece* Find(int64_t number);
  Piece* Next(const std::vector<int64_t>& own);

  const int64_t count_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Piece> open_;  // a few per thread, in the order in which they were wanted
  int64_t ahead_ = 0;        // the first that nobody has wanted or begun, nor any after it
};

}  // namespace kelvo::host

#endif  // KELVO_HOST_SHARED_PIECES_H
