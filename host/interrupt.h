// Ctrl-C and termination: work stops at the next tile and files are left in order.
#ifndef KELVO_HOST_INTERRUPT_H
#define KELVO_HOST_INTERRUPT_H

#include <string>

namespace kelvo::host {

// Makes SIGINT and SIGTERM set the flag below instead of ending the program. If that has not led to its end within a
// second, for one tile can take longer, or at a second signal, the guarded file is removed, the last words are written
// and the program ends at once. Signals that the parent has set to be ignored stay so.
void CatchStopSignals();

bool StopRequested();

// Ends the program by the signal that was caught, so that its parent sees how it ended. Returns if there was none.
void EndByCaughtSignal();

// The file that a second signal removes; an empty path for none. One file at a time, not thread-safe.
void GuardFile(const std::string& path);

// What standard error gets if the program ends at once; up to 500 bytes. Not thread-safe.
void SetLastWords(const std::string& text);

}  // namespace kelvo::host

#endif  // KELVO_HOST_INTERRUPT_H
