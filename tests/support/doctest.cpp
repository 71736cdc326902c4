// The test framework itself, compiled once for all test programs.
#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>
