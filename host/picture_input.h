// A picture that is to be worked on, from its file.
#ifndef KELVO_HOST_PICTURE_INPUT_H
#define KELVO_HOST_PICTURE_INPUT_H

#include <string>
#include <vector>

#include "colour.h"

namespace kelvo::host {

// Opens, decodes and, where its colour space asks for it, converts the picture; remarks are appended to `notes`.
// Throws HostError with the path and the reason.
ColourPicture LoadColourPicture(const std::string& path, bool show_progress, std::vector<std::string>& notes);

}  // namespace kelvo::host

#endif  // KELVO_HOST_PICTURE_INPUT_H
