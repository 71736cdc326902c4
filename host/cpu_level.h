// Which instruction set the library's routines use: the best that the machine has, or what KELVO_CPU asks for.
#ifndef KELVO_HOST_CPU_LEVEL_H
#define KELVO_HOST_CPU_LEVEL_H

#include "stages/cpu.h"
#include "stages/routines.h"

namespace kelvo::host {

// The level named by the environment variable KELVO_CPU (plain, sse2 or neon, avx2, avx512), the best one where it is
// unset or empty. Throws HostError if there is no such level or the machine cannot run it. All levels give the same
// results.
Level ChosenLevel();

// The routines of the level that the first call found chosen.
const Routines& ChosenRoutines();

}  // namespace kelvo::host

#endif  // KELVO_HOST_CPU_LEVEL_H
