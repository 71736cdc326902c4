// The namespace of what is compiled once per instruction set. A file that names it is compiled for every level, with
// KELVO_TARGET set by src/CMakeLists.txt; among the ordinary sources it is the plain version of the same text, which
// the compiler may turn into vectors of the baseline where it sees them.
#ifndef KELVO_STAGES_TARGET_H
#define KELVO_STAGES_TARGET_H

#ifndef KELVO_TARGET
#define KELVO_TARGET plain
#endif

#endif  // KELVO_STAGES_TARGET_H
