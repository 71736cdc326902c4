// Places that wait for their filter.
#ifndef KELVO_STAGES_PREFILTER_FILTER_QUEUES_H
#define KELVO_STAGES_PREFILTER_FILTER_QUEUES_H

#include <cstdint>
#include <utility>

#include "stages/prefilter/filter_rows.h"
#include "stages/prefilter/filters.h"
#include "stages/target.h"

namespace kelvo::KELVO_TARGET {

// Applies a filter at places, distances from the first cell of the planes.
using FilterWork = void (*)(const FilterPlanes& planes, const uint16_t* places, int count);

// Filters by number: row * (kDirections + 1) + direction.
inline constexpr int kFilters = kFilterRows * (kDirections + 1);

// The filters that class codes choose; no cell of row 0 is changed.
constexpr bool IsChosen(int number) {
  const int row = number / (kDirections + 1);
  const bool directional = number % (kDirections + 1) != kDirections;
  return directional ? row >= 1 && row <= 4 : row >= 4;
}

struct FilterWorks {
  FilterWork of[kFilters];
};

// Work<number>::Apply of the filters that are chosen.
template <template <int> class Work>
constexpr FilterWorks MakeWorks() {
  return []<int... kNumber>(std::integer_sequence<int, kNumber...> /*numbers*/) {
    const auto work = []<int kOne>() -> FilterWork {
      if constexpr (IsChosen(kOne))
        return Work<kOne>::Apply;
      else
        return nullptr;
    };
    return FilterWorks{{work.template operator()<kNumber>()...}};
  }
  (std::make_integer_sequence<int, kFilters>());
}

class FilterQueues {
 public:
  FilterQueues(const FilterPlanes& planes, const FilterWorks& works) : planes_(planes), works_(works) {}

  void Add(int number, int place) {
    Queue& queue = queues_[number];
    queue.places[queue.count++] = static_cast<uint16_t>(place);
    if (queue.count == kLength) Work(number);
  }

  // What still waits.
  void Finish() {
    for (int number = 0; number < kFilters; ++number)
      if (queues_[number].count != 0) Work(number);
  }

 private:
  static constexpr int kLength = 32;
  struct Queue {
    int count = 0;
    uint16_t places[kLength];
  };

  void Work(int number) {
    works_.of[number](planes_, queues_[number].places, queues_[number].count);
    queues_[number].count = 0;
  }

  const FilterPlanes& planes_;
  const FilterWorks& works_;
  Queue queues_[kFilters];
};

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_PREFILTER_FILTER_QUEUES_H
