// The search for a move: one unit either way, then doubling, then halving.
//
// A Trial holds one pixel pair or line cell with the state that a candidate step would change:
//   uint32_t Cost() const                  cost of the current state
//   uint32_t Cost(int sign, int j) const   cost after a further step of sign x 2^j units
//   void Accept(int sign, int j)           takes that step
//   void HalveUnit()                       halves the unit, with which nothing has been accepted yet
#ifndef KELVO_STAGES_MOVE_SEARCH_H
#define KELVO_STAGES_MOVE_SEARCH_H

#include <cstdint>

namespace kelvo {

inline constexpr int kMaxDoublings = 10;

// After one unit was accepted at `cost`: doubles as long as that pays. Returns the exponent that did not, 11 if all
// did.
template <class Trial>
int Double(Trial& trial, int sign, uint32_t& cost, int& units) {
  int j = 1;
  for (; j <= kMaxDoublings; ++j) {
    const uint32_t next = trial.Cost(sign, j);
    if (next >= cost) break;
    cost = next;
    trial.Accept(sign, j);
    units += sign * (1 << j);
  }
  return j;
}

// From 2^j units down, in the running direction or, at half the size, in the other one.
template <class Trial>
void Halve(Trial& trial, int sign, int j, uint32_t& cost, int& units) {
  const auto try_step = [&](int direction) {
    const uint32_t next = trial.Cost(direction, j);
    if (next >= cost) return false;
    cost = next;
    trial.Accept(direction, j);
    units += direction * (1 << j);
    return true;
  };
  while (j >= 0) {
    if (try_step(sign)) {
      --j;
      continue;
    }
    if (--j < 0) return;
    if (try_step(-sign)) {
      sign = -sign;
      --j;
    }
  }
}

// The best move in units, at most 4094 either way; `trial` ends in the state after it. `first_sign` is tried first;
// `halve_on_reversal` halves the unit where the other sign won, and accepts the halved step unseen. Intended.
template <class Trial>
int SearchMove(Trial& trial, int first_sign, bool halve_on_reversal) {
  const uint32_t unmoved = trial.Cost();
  int sign = first_sign;
  uint32_t cost = trial.Cost(sign, 0);
  if (cost >= unmoved) {
    sign = -sign;
    cost = trial.Cost(sign, 0);
    if (cost >= unmoved) return 0;
    if (halve_on_reversal) {
      trial.HalveUnit();
      cost = trial.Cost(sign, 0);
    }
  }
  trial.Accept(sign, 0);
  int units = sign;
  const int stopped = Double(trial, sign, cost, units);
  Halve(trial, sign, stopped - 1, cost, units);
  return units;
}

}  // namespace kelvo

#endif  // KELVO_STAGES_MOVE_SEARCH_H
