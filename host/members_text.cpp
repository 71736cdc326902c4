#include "members_text.h"

#include <algorithm>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

namespace kelvo::host {
namespace {

using Json = nlohmann::ordered_json;

int Number(const Json& object, const char* name) {
  return object.at(name).get<int>();
}

std::string Text(const Json& object, const char* name) {
  return object.at(name).get<std::string>();
}

struct Range {
  int least = 0, most = 0;
  void Add(int value) {
    least = std::min(least, value);
    most = std::max(most, value);
  }
};

// The field `name` of the cells, upper rows first, under a line of column numbers; "." where there is no cell.
void AddGrid(std::ostream& out, const Json& cells, const char* name) {
  Range columns, rows;
  size_t digits = 3;
  for (const Json& cell : cells) {
    columns.Add(Number(cell, "column"));
    rows.Add(Number(cell, "up"));
    digits = std::max(digits, std::to_string(Number(cell, name)).size());
  }
  const auto field = std::setw(static_cast<int>(digits) + 1);
  out << "    up";
  for (int column = columns.least; column <= columns.most; ++column) out << field << column;
  for (int up = rows.most; up >= rows.least; --up) {
    out << "\n" << std::setw(6) << up;
    for (int column = columns.least; column <= columns.most; ++column) {
      const auto cell = std::find_if(cells.begin(), cells.end(), [&](const Json& candidate) {
        return Number(candidate, "column") == column && Number(candidate, "up") == up;
      });
      out << field << (cell == cells.end() ? "." : std::to_string(Number(*cell, name)));
    }
  }
  out << "\n";
}

void AddSum(std::ostream& out, const char* title, const Json& sum) {
  out << "\n"
      << title << ": " << sum.at("cells").size() << " cells, unit: " << Text(sum, "unit") << ", total "
      << Number(sum, "total") << ", shift " << Number(sum, "shift") << ", normaliser ";
  const Json& normaliser = sum.at("normaliser");
  out << (normaliser.is_null() ? "none" : std::to_string(normaliser.get<uint32_t>())) << "\n";
  AddGrid(out, sum.at("cells"), "weight");
}

std::string Place(const Json& cell) {
  std::ostringstream place;
  place << '(' << Number(cell, "column") << ", " << Number(cell, "up") << ')';
  return place.str();
}

void AddOperator(std::ostream& out, const Json& step_operator) {
  const Json& response = step_operator.at("response");
  out << "\noperator of pass " << Number(step_operator, "pass") << ": " << Text(step_operator, "name")
      << ", taps (column, up)\n";
  for (const Json& tap : step_operator.at("taps"))
    out << "    " << std::setw(8) << Place(tap) << (Number(tap, "sign") > 0 ? "  + " : "  - ") << std::left
        << std::setw(2) << Text(tap, "of_step") << std::right << " x " << std::setw(5) << Number(tap, "share")
        << " / 65536\n";
  out << "  its response in 65520ths: " << response.at("cells").size() << " cells, largest "
      << Number(response, "largest") << ", weighed by the pixels " << Place(response.at("rising_pixel")) << " and "
      << Place(response.at("falling_pixel")) << "\n";
  AddGrid(out, response.at("cells"), "amount");
}

// "pass 1: 3 (refined 2 1 0 times)"
void AddPass(std::ostream& out, const Json& row, size_t pass) {
  out << "   pass " << pass + 1 << ": " << row.at("iterations")[pass].get<int>();
  const Json& refinements = row.at("refinements")[pass];
  if (refinements.empty()) return;
  out << " (refined";
  for (const Json& count : refinements) out << ' ' << count.get<int>();
  out << " times)";
}

void AddSchedule(std::ostream& out, const Json& schedule) {
  out << "\niterations by accuracy\n";
  for (const Json& row : schedule) {
    out << std::setw(6) << Number(row, "accuracy");
    for (size_t pass = 0; pass < row.at("iterations").size(); ++pass) AddPass(out, row, pass);
    out << "\n";
  }
}

void AddCommon(std::ostream& out, const Json& member) {
  out << "passes " << Number(member, "passes") << ", ScaleShift " << Number(member, "scale_shift") << "\n"
      << "margins: " << Number(member, "margin") << ", extra " << Number(member, "extra_margin") << ", final "
      << Number(member, "final_margin") << "\n";
}

void AddMotion(std::ostream& out, const Json& member) {
  const int width = Number(member, "width");
  out << "motion blur of width " << width << " in direction " << Number(member, "direction") << ": a line of "
      << width + 1 << " pixels\n"
      << "folded to " << Number(member, "folded") << " degrees (tile turned: " << Text(member, "turned") << "), bucket "
      << Number(member, "bucket") << ", angle of the member " << Number(member, "angle") << "\n";
  AddCommon(out, member);
  out << "squares: sweep " << Number(member, "sweep_size") << ", line minimum " << Number(member, "line_minimum_size")
      << ", re-blur " << Number(member, "reblur_size") << "\n";
  AddSum(out, "bare line", member.at("bare_line"));
  AddSum(out, "model line", member.at("model_line"));
  if (!member.at("observed_smoother").is_null()) AddSum(out, "observed smoother", member.at("observed_smoother"));
  for (const Json& step_operator : member.at("operators")) AddOperator(out, step_operator);
}

void AddRound(std::ostream& out, const Json& member) {
  out << "round blur of width " << Number(member, "width") << "\n";
  AddCommon(out, member);
  out << "squares: floor " << Number(member, "floor_size") << ", re-blur " << Number(member, "blur_size")
      << "; floor of " << Number(member, "floor_cells") << " cells; "
      << (member.at("shortcut").get<bool>() ? "may start" : "never starts") << " from a sharpened tile\n";
  AddSum(out, "blur", member.at("blur"));
}

}  // namespace

std::string MemberText(const Json& member) {
  std::ostringstream out;
  if (member.contains("direction"))
    AddMotion(out, member);
  else
    AddRound(out, member);
  AddSchedule(out, member.at("schedule"));
  return out.str();
}

}  // namespace kelvo::host
