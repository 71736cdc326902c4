#include <doctest/doctest.h>

#include "vips_setup.h"

int main(int argc, char** argv) {
  const kelvo::host::VipsSession session(argv[0], 0);
  return doctest::Context(argc, argv).run();
}
