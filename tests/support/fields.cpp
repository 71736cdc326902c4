#include "support/fields.h"

#include <cstddef>
#include <map>
#include <stdexcept>

#include "support/field_names.h"

namespace kelvo::test {

int32_t* FieldWord(TileParams& params, const std::string& name) {
#define KELVO_ENTRY(field) {#field, offsetof(TileParams, field)},
  static const std::map<std::string, size_t> offsets = {KELVO_FIELD_NAMES(KELVO_ENTRY)};
#undef KELVO_ENTRY
  const auto found = offsets.find(name);
  if (found == offsets.end()) throw std::invalid_argument("unknown field: " + name);
  return reinterpret_cast<int32_t*>(reinterpret_cast<char*>(&params) + found->second);
}

}  // namespace kelvo::test
