// The searches of a window's cells, a few vectors at a time; included by the files that are compiled once per level.
#ifndef KELVO_STAGES_SEARCH_TURNS_H
#define KELVO_STAGES_SEARCH_TURNS_H

#include <cstddef>

#include "stages/lanes.h"
#include "stages/move_sweep.h"

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

// Searches `count` vectors of cells, some at a time: a trial waits for the one before it, but not for those of other
// vectors, and the processor works on both. A Group searches one vector after the other:
//   bool Begin(int number)   returns whether there is anything to search
//   bool Step()              returns whether anything is left to search
//   void Finish()            codes what was found
template <class Group, size_t kGroups>
void SearchInTurns(Group (&groups)[kGroups], int count) {
  int next = 0;
  const auto begin = [&](Group& group) {
    while (next < count)
      if (group.Begin(next++)) return true;
    return false;
  };
  bool running[kGroups];
  size_t left = 0;
  for (size_t i = 0; i < kGroups; ++i) left += running[i] = begin(groups[i]);
  while (left > 0)
    for (size_t i = 0; i < kGroups; ++i) {
      if (!running[i] || groups[i].Step()) continue;
      groups[i].Finish();
      running[i] = begin(groups[i]);
      left -= !running[i];
    }
}

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_SEARCH_TURNS_H
