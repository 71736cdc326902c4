// Every cell of an area by the filter that its class code names.
//
// The filters change from cell to cell. Places that want the same one wait in its queue until there are enough to be
// worked together, so that neither calls nor branches change from cell to cell.
#ifndef KELVO_STAGES_PREFILTER_FILTER_ROWS_H
#define KELVO_STAGES_PREFILTER_FILTER_ROWS_H

#include <cstdint>

#include "stages/prefilter/classify.h"
#include "stages/prefilter/filters.h"
#include "stages/target.h"

namespace kelvo {

// Three planes from the same cell on.
struct FilterPlanes {
  const int32_t* codes;
  const int32_t* display;
  int32_t* staged;  // overlaps neither of the others
};

inline constexpr int kFilters = kFilterRows * (kDirections + 1);
inline constexpr int kKeepsCell = kDirections;  // the filter that is the cell itself

// Filters by number: row * (kDirections + 1) + direction.
inline const Stencil& FilterOfNumber(int number) {
  return PrefilterFilter(number / (kDirections + 1), number % (kDirections + 1));
}

namespace KELVO_TARGET {

// Filters `rows` rows of `columns` cells, at least 16, of planes from `planes` on.
void FilterRows(const FilterPlanes& planes, int rows, int columns);

// Places, as distances from the first cell, that wait for their filter.
class FilterQueues {
 public:
  static constexpr int kLength = 32;
  static constexpr int kTogether = 4;  // places that are worked at once

  // Work is called with a filter's number, places and their count: a multiple of kTogether.
  template <class Work>
  void Add(int number, int place, Work work) {
    Queue& queue = queues_[number];
    queue.places[queue.count++] = static_cast<uint16_t>(place);
    if (queue.count == kLength) {
      work(number, queue.places, kLength);
      queue.count = 0;
    }
  }

  // What still waits; the last place of a queue may be worked several times.
  template <class Work>
  void Finish(Work work) {
    for (int number = 0; number < kFilters; ++number) {
      Queue& queue = queues_[number];
      if (queue.count == 0) continue;
      for (; queue.count % kTogether != 0; ++queue.count) queue.places[queue.count] = queue.places[queue.count - 1];
      work(number, queue.places, queue.count);
    }
  }

 private:
  struct Queue {
    int count = 0;
    uint16_t places[kLength];
  };
  Queue queues_[kFilters];
};

}  // namespace KELVO_TARGET
}  // namespace kelvo

#endif  // KELVO_STAGES_PREFILTER_FILTER_ROWS_H
