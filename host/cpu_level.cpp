#include "cpu_level.h"

#include <cstdlib>
#include <string>

#include "errors.h"

namespace kelvo::host {
namespace {

std::string RunnableNames(Level best) {
  std::string names;
  for (const Level level : kLevels)
    if (level <= best) names += std::string(names.empty() ? "" : ", ") + NameOf(level);
  return names;
}

}  // namespace

Level ChosenLevel() {
  const char* asked = std::getenv("KELVO_CPU");
  const Level best = BestLevel();
  if (asked == nullptr || *asked == '\0') return best;
  for (const Level level : kLevels)
    if (level <= best && asked == std::string(NameOf(level))) return level;
  throw HostError("KELVO_CPU=" + std::string(asked) + ": this machine has no such level; use one of " +
                  RunnableNames(best) + ", or leave it unset for the fastest");
}

const Routines& ChosenRoutines() {
  static const Routines& chosen = RoutinesOf(ChosenLevel());
  return chosen;
}

}  // namespace kelvo::host
