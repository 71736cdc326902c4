#include <doctest/doctest.h>

#include "exiv2_setup.h"
#include "vips_setup.h"

int main(int argc, char** argv) {
  const kelvo::host::VipsSession session(argv[0], false);
  const kelvo::host::Exiv2Session exiv2;
  return doctest::Context(argc, argv).run();
}
