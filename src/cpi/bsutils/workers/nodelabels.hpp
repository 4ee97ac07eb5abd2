#pragma once

#include <array>
#include <cstddef>

// What the trace of a tree calls its nodes: the vocabulary in which the broker's service people read a tree. The texts
// go out of the process and never change.
namespace oxr {

struct NodeKind {
  const char* category;
  const char* nodeType;
  const char* whereDefined;  // null where the numbers of the node tell
};

// By category. Two numbers within the range are no categories; one of them tells where its node is defined all the
// same: TreeTrace.LabelsFollowTheCategory.
inline constexpr auto kNodeKinds = std::to_array<NodeKind>({
    {"SELF_DEFINING_FIELD", "Simple", "Self"},
    {"PRE_DEFINED_FIELD", "Simple", nullptr},
    {"SELF_DEFINING_STRUCTURE", "Compound", "Self"},
    {"PRE_DEFINED_STRUCTURE", "Compound", nullptr},
    {"UN_PARSED_BUFFER", "UnparsedBuffer", "Unknown"},
    {"SELF_DEFINING_MESSAGE", "Message", "Self"},
    {"PRE_DEFINED_MESSAGE", "Message", nullptr},
    {"ERROR invalid", "Message", nullptr},
    {"ERROR invalid", "Message", "Self"},
    {"TYPE_DEFINED_FIELD", "Simple", nullptr},
    {"TYPE_DEFINED_STRUCTURE", "Compound", nullptr},
    {"TYPE_DEFINED_MESSAGE", "Message", nullptr},
    {"LIST_TYPE_STRUCTURE", "Compound", nullptr},
});
inline constexpr NodeKind kNoKind{"ERROR invalid", "Message", nullptr};

constexpr const NodeKind& nodeKind(int category) {
  const auto index = static_cast<std::size_t>(category);
  return index < kNodeKinds.size() ? kNodeKinds[index] : kNoKind;
}

// The member of a type comes first, whatever the category; then what the category says; then the numbers.
constexpr const char* whereDefined(int category, int memberId, int tagId, int typeIndex) {
  if (memberId >= 1) return "TypeMember";
  if (const char* const known = nodeKind(category).whereDefined; known != nullptr) return known;
  if (tagId >= 1) return "Tag";
  return typeIndex >= 0 ? "Type" : "Unknown";
}

}  // namespace oxr
