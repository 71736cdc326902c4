// Which pictures a command line means, and where the result of each goes.
#ifndef KELVO_HOST_FILE_LIST_H
#define KELVO_HOST_FILE_LIST_H

#include <string>
#include <vector>

#include "options.h"

namespace kelvo::host {

struct PictureFile {
  std::string path;
  std::string relative;  // below the folder that was named; of a file that was named itself its name
  std::string output;    // empty for subcommands that write none
  bool in_folder = false;
  std::string error;  // the path could not be listed
};

// options.inputs with folders replaced by the pictures in them, in order of their paths, then cut down to the shard. What
// counts in a folder is told by the content; files with the suffix of a picture count even if they hold none, and fail
// later. Hidden files, the output folder and results that were written beside their inputs are passed over. Throws
// HostError if two pictures would be written to one file.
std::vector<PictureFile> ListPictures(const Options& options);

}  // namespace kelvo::host

#endif  // KELVO_HOST_FILE_LIST_H
