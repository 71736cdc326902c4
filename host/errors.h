// Failures that are told to the user.
#ifndef KELVO_HOST_ERRORS_H
#define KELVO_HOST_ERRORS_H

#include <stdexcept>

namespace kelvo::host {

// The message names the file or value, what was wrong and what would be right.
class HostError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace kelvo::host

#endif  // KELVO_HOST_ERRORS_H
