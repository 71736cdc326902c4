#include "members.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "members_text.h"

namespace kelvo::host {
namespace {

using Json = nlohmann::ordered_json;

struct Line {
  size_t cells;
  int total, shift;
  uint32_t normaliser;  // 0: none
};
void CheckLine(const Json& line, const Line& expected) {
  CHECK(line["cells"].size() == expected.cells);
  CHECK(line["total"] == expected.total);
  CHECK(line["shift"] == expected.shift);
  CHECK(line["normaliser"] == (expected.normaliser == 0 ? Json() : Json(expected.normaliser)));
  int total = 0;
  for (const Json& cell : line["cells"]) total += cell["weight"].get<int>();
  CHECK(total == expected.total);
}

TEST_CASE("a member tells its squares, its smoother, its taps and how the tile is turned") {
  const Json member = DescribeMember(20, 199);  // a line at 19 degrees
  const std::vector<std::pair<std::string, int>> numbers = {
      {"folded", 19},      {"bucket", 4},       {"angle", 20},        {"passes", 2},       {"scale_shift", 1},
      {"margin", 37},      {"extra_margin", 2}, {"final_margin", 11}, {"sweep_size", 150}, {"line_minimum_size", 156},
      {"reblur_size", 182}};
  for (const auto& number : numbers) {
    CAPTURE(number.first);
    CHECK(member[number.first] == number.second);
  }
  CheckLine(member["bare_line"], {41, 158, 6, 1739733588});
  CheckLine(member["model_line"], {109, 364, 7, 1510318170});
  CheckLine(member["observed_smoother"], {9, 36, 4, 1908874353});
  CHECK(DescribeMember(10, 30)["observed_smoother"].is_null());
  const Json& fine = member["operators"][1];
  CHECK(fine["name"] == "pair");
  CHECK(fine["response"]["cells"].size() == 54);
  CHECK(fine["response"]["largest"] == 1587);
  std::vector<int> shares;
  for (const Json& tap : member["operators"][0]["taps"])
    if (tap["sign"] == 1) shares.push_back(tap["share"]);
  CHECK(shares == std::vector<int>{41682, 23853, 17829, 47706, 59512, 6023});

  CHECK(member["turned"] == "not at all");
  CHECK(DescribeMember(20, 250)["turned"] == "reflected at the anti-diagonal");
  CHECK(DescribeMember(20, 110)["turned"] == "a quarter clockwise");
  CHECK(DescribeMember(20, 341)["turned"] == "mirrored left to right");
  CHECK(DescribeMember(3, 8)["angle"] == 15);
}

TEST_CASE("iterations follow the effort") {
  const Json schedule = DescribeMember(12, 180)["schedule"];
  CHECK(schedule[0]["iterations"] == Json::parse("[1, 0]"));
  CHECK(schedule[4]["iterations"] == Json::parse("[2, 2]"));
  CHECK(schedule[4]["refinements"] == Json::parse("[[8, 6], [8, 6]]"));
  CHECK(DescribeMember(5, 0)["schedule"][4]["refinements"] == Json::parse("[[3, 2, 1, 0, 0]]"));
}

bool Shows(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_CASE("the text draws what the numbers say") {
  const std::string narrow = MemberText(DescribeMember(5, 20));
  CHECK(Shows(narrow,
              "bare line: 11 cells, unit: eighth of a column, total 46, shift 4, normaliser 1493901668\n"
              "    up  -3  -2  -1   0   1   2   3\n"
              "     1   .   .   .   .   3   6   3\n"
              "     0   .   2   5   8   5   2   .\n"
              "    -1   3   6   3   .   .   .   .\n"));
  const std::string wide = MemberText(DescribeMember(12, 25));
  CHECK(Shows(wide,
              "     2   .   .   .   .   .   .   .   .   2   4   5   8   6   2   1\n"
              "     1   .   .   .   .   .   .   2   4   6   7   7   4   3   .   .\n"
              "     0   .   .   .   1   2   5   6   8   6   5   2   1   .   .   .\n"));
  CHECK(Shows(wide, "operator of pass 1: tent"));
  CHECK(Shows(MemberText(DescribeMember(15, 180)), "total 128, shift 7, normaliser none\n"));
  const std::string round = MemberText(DescribeMember(2, 0));
  CHECK(Shows(round, "     1   1   2   1\n     0   2   2   2\n    -1   1   2   1\n"));
  CHECK(Shows(round, "floor of 9 cells"));
}

}  // namespace
}  // namespace kelvo::host
