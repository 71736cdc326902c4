// Ctrl-C and termination: work stops at the next tile and files are left in order.
#ifndef KELVO_HOST_INTERRUPT_H
#define KELVO_HOST_INTERRUPT_H

#include <string>

namespace kelvo::host {

// Makes SIGINT and SIGTERM set the flag below instead of ending the program. A second signal removes the guarded file
// and ends the program at once. Signals that the parent has set to be ignored stay so.
void CatchStopSignals();

bool StopRequested();

// Ends the program by the signal that was caught, so that its parent sees how it ended. Returns if there was none.
void EndByCaughtSignal();

// The file that a second signal removes; an empty path for none. One file at a time, not thread-safe.
void GuardFile(const std::string& path);

}  // namespace kelvo::host

#endif  // KELVO_HOST_INTERRUPT_H
