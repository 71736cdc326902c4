// The levels that the machine of the tests can run.
#ifndef KELVO_TESTS_SUPPORT_LEVELS_H
#define KELVO_TESTS_SUPPORT_LEVELS_H

#include <vector>

#include "stages/cpu.h"

namespace kelvo::test {

// From kPlain to the best one.
inline std::vector<Level> RunnableLevels() {
  std::vector<Level> levels;
  for (const Level level : kLevels)
    if (level <= BestLevel()) levels.push_back(level);
  return levels;
}

}  // namespace kelvo::test

#endif  // KELVO_TESTS_SUPPORT_LEVELS_H
