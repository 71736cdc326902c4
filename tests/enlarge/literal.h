// The enlargement once more, as plainly as it can be told: one pixel at a time on whole planes, with branches.
#ifndef KELVO_TESTS_ENLARGE_LITERAL_H
#define KELVO_TESTS_ENLARGE_LITERAL_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace kelvo::test {

// How often each way through the rules was taken, by "rule/phase".
using Taken = std::map<std::string, int>;

// The enlargement of a tile: 65536 cells in, 65536 out. Counts into `taken` unless it is null.
std::vector<int32_t> EnlargeLiterally(const std::vector<int32_t>& tile, Taken* taken = nullptr);

}  // namespace kelvo::test

#endif  // KELVO_TESTS_ENLARGE_LITERAL_H
