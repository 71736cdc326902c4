// Whole calls against answers of an independent, literal implementation: see README.md beside this file.
#include <doctest/doctest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "support/fields.h"
#include "support/library.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

using nlohmann::json;

void SetField(TileParams& params, const std::string& name, const json& value) {
  int32_t* word = FieldWord(params, name);
  const json values = value.is_array() ? value : json::array({value});
  for (const json& number : values) *word++ = static_cast<int32_t>(number.get<int64_t>());
}

void Fill(Bench& bench, const json& tile) {
  std::vector<int> arguments;
  for (size_t i = 1; i < tile.size(); ++i) arguments.push_back(tile[i]);
  bench.Fill(tile[0], arguments);
}

std::string Hex(uint32_t crc) {
  char text[9];
  std::snprintf(text, sizeof text, "%08x", crc);
  return text;
}

void CheckFields(TileParams& params, const json& fields) {
  for (auto field = fields.begin(); field != fields.end(); ++field) {
    const std::string& name = field.key();
    CAPTURE(name);
    const int32_t* word = FieldWord(params, name);
    const json values = field->is_array() ? *field : json::array({*field});
    for (const json& number : values) CHECK(*word++ == static_cast<int32_t>(number.get<int64_t>()));
  }
}

void RunStep(Bench& bench, const json& step) {
  if (step.contains("set"))
    for (const auto& [name, value] : step["set"].items()) SetField(bench.params, name, value);
  if (step.contains("tile")) Fill(bench, step["tile"]);
  const int32_t result = CallLibrary(step["op"], bench.params, bench.heap(), step.value("variant", 0u));
  const json& expect = step["expect"];
  CHECK(result == expect["result"].get<int32_t>());
  CHECK(std::string(bench.params.Message) == expect["message"].get<std::string>());
  if (expect.contains("core")) CHECK(Hex(bench.CoreCrc()) == expect["core"].get<std::string>());
  if (expect.contains("plane0")) CHECK(Hex(bench.Crc(0, 0, 256)) == expect["plane0"].get<std::string>());
  if (expect.contains("fields")) CheckFields(bench.params, expect["fields"]);
}

void RunGroup(const std::string& group) {
  std::ifstream file(std::string(KELVO_KNOWN_ANSWERS) + "/" + group + ".json");
  const json cases = json::parse(file);
  REQUIRE(!cases.empty());
  for (const json& test_case : cases) {
    const std::string name = test_case["name"];
    CAPTURE(name);
    Bench bench;
    for (const json& step : test_case["steps"]) RunStep(bench, step);
  }
  MESSAGE(group << ": " << cases.size() << " cases");
}

TEST_CASE("known answers: interface, defocus, round focus of widths 1..7") {
  RunGroup("spine");
}
TEST_CASE("known answers: round focus of widths 8..20") {
  RunGroup("round-focus");
}
TEST_CASE("known answers: motion defocus") {
  RunGroup("motion-defocus");
}
TEST_CASE("known answers: motion focus") {
  RunGroup("motion-focus");
}
TEST_CASE("known answers: variants of round and motion focus") {
  RunGroup("variants");
}
TEST_CASE("known answers: JPEG grid and blur width") {
  RunGroup("analysis");
}

TEST_CASE("known answers: enlargement") {
  RunGroup("enlarge");
}

}  // namespace
}  // namespace kelvo::test
