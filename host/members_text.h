// A member's numbers for people: lines of text, cells as small grids.
#ifndef KELVO_HOST_MEMBERS_TEXT_H
#define KELVO_HOST_MEMBERS_TEXT_H

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace kelvo::host {

// `member` is what DescribeMember returns.
std::string MemberText(const nlohmann::ordered_json& member);

}  // namespace kelvo::host

#endif  // KELVO_HOST_MEMBERS_TEXT_H
