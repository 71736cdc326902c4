// Exiv2 for as long as the object lives, once in a program: silent, with the namespace that holds the settings of a run.
#ifndef KELVO_HOST_EXIV2_SETUP_H
#define KELVO_HOST_EXIV2_SETUP_H

namespace kelvo::host {

inline constexpr char kXmpPrefix[] = "kelvo";
inline constexpr char kXmpNamespace[] = "urn:x-kelvo:settings/";

class Exiv2Session {
 public:
  Exiv2Session();
  Exiv2Session(const Exiv2Session&) = delete;
  Exiv2Session& operator=(const Exiv2Session&) = delete;
  ~Exiv2Session();
};

}  // namespace kelvo::host

#endif  // KELVO_HOST_EXIV2_SETUP_H
