#include "shared_pieces.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>
#include <thread>
#include <vector>

namespace kelvo::host {

TEST_CASE("shared pieces: own ones come first, then those of others, then what follows, each to one thread") {
  SharedPieces pieces(8);
  pieces.Want({4, 5});
  pieces.Want({5, 6});
  CHECK(pieces.Begin({5, 6}) == 5);
  CHECK(pieces.Begin({4, 5}) == 4);
  pieces.End(4);
  CHECK(pieces.Begin({4, 5}) == 6);  // instead of waiting for 5
  CHECK(pieces.Begin({4, 5}) == 7);
  pieces.End(5);
  CHECK(pieces.Begin({4, 5}) == std::nullopt);
  pieces.End(6);
  CHECK(pieces.Begin({5, 6}) == std::nullopt);
  pieces.Want({3, 7});
  CHECK(pieces.Begin({3, 7}) == 3);
  pieces.End(3);
  std::thread other([&pieces] { pieces.End(7); });
  CHECK(pieces.Begin({3, 7}) == std::nullopt);  // 7 was the last
  other.join();
}

TEST_CASE("shared pieces: many threads do each by itself and leave with their own done") {
  constexpr int kThreads = 8, kPieces = 400;
  SharedPieces pieces(kPieces + 1);
  std::array<std::atomic<int>, kPieces + 1> working{}, done{};
  std::atomic<int> left_early = 0, at_once = 0;
  const auto work = [&](int number) {
    for (int first = number; first < kPieces; first += kThreads) {
      const std::vector<int64_t> own = {first, first + 1};  // the next thread wants the second one, too
      pieces.Want(own);
      while (const auto piece = pieces.Begin(own)) {
        const auto place = static_cast<size_t>(*piece);
        at_once += working[place]++;
        std::this_thread::yield();
        ++done[place];
        --working[place];
        pieces.End(*piece);
      }
      for (const int64_t piece : own) left_early += done[static_cast<size_t>(piece)] == 0;
    }
  };
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(work, i);
  for (std::thread& thread : threads) thread.join();
  CHECK(left_early == 0);
  CHECK(at_once == 0);
  CHECK(std::all_of(done.begin(), done.end(), [](int times) { return times > 0; }));
}

}  // namespace kelvo::host
