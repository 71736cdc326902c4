// The searches of a window's cells, a few vectors at a time; included by the files that are compiled once per level.
#ifndef KELVO_STAGES_SEARCH_TURNS_H
#define KELVO_STAGES_SEARCH_TURNS_H

#include <cstddef>

#include "stages/lane_search.h"

namespace kelvo::KELVO_TARGET {

// The vectors of the cells of a window, of every `stride`-th row and column from its first on; a row has kLanes of them at
// least. The last vector of a row overlaps the one before it.
class WindowVectors {
 public:
  struct Place {
    int row, column;  // of the first lane
    int skip;         // lanes that the vector before has
  };

  WindowVectors(const Window& window, int stride)
      : first_row_(window.first_row),
        first_column_(window.first_column),
        rows_((window.rows() + stride - 1) / stride),
        cells_((window.columns() + stride - 1) / stride),
        stride_(stride) {}

  int count() const { return rows_ * InRow(); }

  Place At(int number) const {
    const int first = number % InRow() * kLanes, at = first < cells_ - kLanes ? first : cells_ - kLanes;
    return {first_row_ + stride_ * (number / InRow()), first_column_ + stride_ * at, first - at};
  }

 private:
  int InRow() const { return (cells_ + kLanes - 1) / kLanes; }

  int first_row_, first_column_, rows_, cells_, stride_;
};

// One vector of cells after the other under search, the cells kStride columns apart.
template <class Trial, int kStride, class Read>
class VectorSearch {
 public:
  template <class Sweep, class Amounts>
  VectorSearch(const Sweep& sweep, const Amounts& amounts, const LaneCoder& coder, const WindowVectors& vectors,
               Read read)
      : sweep_(sweep), coder_(coder), vectors_(vectors), read_(read), trial_(sweep, amounts), search_(trial_) {}

  // Returns whether there is anything to search.
  bool Begin(int number) {
    const WindowVectors::Place place = vectors_.At(number);
    codes_ = sweep_.codes + CellsTo(place.row, place.column);
    skip_ = place.skip;
    was_ = kStride == 1 ? Load(codes_) : LoadEven(codes_);
    const Vector previous = LaneCoder::Previous(was_), unit = coder_.Units(previous);
    if (!read_(trial_, place, unit)) return false;
    search_.Begin(All(~0u), coder_.FirstSign(previous), HalvesOnReversal(sweep_));
    return true;
  }

  // Returns whether anything is left to search.
  bool Step() { return search_.Step(); }

  // Codes what was found.
  void Finish() const {
    const Vector coded = coder_.Coded(was_, search_.units());
    for (int i = skip_; i < kLanes; ++i) codes_[kStride * i] = Signed(coded[i]);
  }

 private:
  const MoveSweep& sweep_;
  const LaneCoder& coder_;
  const WindowVectors& vectors_;
  Read read_;
  int32_t* codes_ = nullptr;
  int skip_ = 0;
  Vector was_;
  Trial trial_;
  LaneSearch<Trial> search_;
};

// Works through `count` vectors, some at a time: a trial waits for the one before it, but not for those of other vectors,
// and the processor works on both.
template <class Search, size_t kSearches>
void SearchInTurns(Search (&searches)[kSearches], int count) {
  int next = 0;
  const auto begin = [&](Search& search) {
    while (next < count)
      if (search.Begin(next++)) return true;
    return false;
  };
  bool running[kSearches];
  size_t left = 0;
  for (size_t i = 0; i < kSearches; ++i) left += running[i] = begin(searches[i]);
  while (left > 0)
    for (size_t i = 0; i < kSearches; ++i) {
      if (!running[i] || searches[i].Step()) continue;
      searches[i].Finish();
      running[i] = begin(searches[i]);
      left -= !running[i];
    }
}

// Searches the cells of a window, of every kStride-th row and column, and codes what it finds.
//   bool read(Trial& trial, WindowVectors::Place place, Vector unit)   readies a trial of the vector there; returns
//                                                                      whether it is to be searched
template <class Trial, int kStride, class Sweep, class Amounts, class Read>
void SearchVectors(const Sweep& sweep, const Amounts& amounts, const LaneCoder& coder, const Window& window,
                   Read read) {
  using Search = VectorSearch<Trial, kStride, Read>;
  const WindowVectors vectors(window, kStride);
  Search searches[] = {Search(sweep, amounts, coder, vectors, read), Search(sweep, amounts, coder, vectors, read)};
  SearchInTurns(searches, vectors.count());
}

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_SEARCH_TURNS_H
