// A state is a box with its number and its meaning; calls that leave it where it is stand in the box, all others are
// arrows. Arrows for events that no operation of the checker reports are grey; what is refused and moves all the same
// is dashed.

#include "pictures/machines.hpp"

#include <cstdint>

#include "core/treemachine.hpp"
#include "core/workermachine.hpp"

namespace oxr::pictures {

namespace {

using core::Arrow;
using core::Calls;

// What a set of calls is called: first those that have a name together.
struct Name {
  Calls calls;
  const char* text;
};
constexpr Name kNames[] = {
    {core::kStart, "startElement"},
    {core::kEnd, "endElement"},
    {{CALL_GET_PROJECT_ID, CALL_GET_PROJECT_DEPENDENCY, CALL_GET_MSG_START_INFO, CALL_GET_MSG_END_INFO,
      CALL_GET_MSG_HEADER, CALL_GET_MSG_CONTENT, CALL_GET_MSG_FOOTER},
     "what the tree is asked"},
    {CALL_INITIALIZE_PARSE, "initializeParse"},
    {CALL_SET_HANDLER, "setFIHandler"},
    {CALL_GET_HANDLER, "getFIHandler"},
    {CALL_PARSE, "parse"},
    {CALL_PARSE_FIRST, "parseFirst"},
    {CALL_PARSE_NEXT, "parseNext"},
    {CALL_HAS_NEXT, "hasNext"},
    {CALL_GET_BYTES_PARSED, "getNumBytesParsed"},
    {CALL_INITIALIZE_WRITE, "initializeWrite"},
    {CALL_SET_TREE, "setFIMessageTree"},
    {CALL_GET_TREE, "getFIMessageTree"},
    {CALL_WRITE, "write"},
    {CALL_GET_DESCRIPTOR, "getWireFormatDescriptor"},
    {CALL_SET_DESCRIPTOR, "setWireFormatDescriptor"},
    {CALL_START_ELEMENT_ID, "startElement by number"},
    {CALL_START_ELEMENT_NAME, "startElement by name"},
    {CALL_END_ELEMENT_ID, "endElement by number"},
    {CALL_END_ELEMENT_NAME, "endElement by name"},
    {CALL_START_MESSAGE, "startMessage"},
    {CALL_END_MESSAGE, "endMessage"},
    {CALL_START_CONTENT, "startMessageContent"},
    {CALL_END_CONTENT, "endMessageContent"},
    {CALL_DATA, "data"},
    {CALL_PROJECT_ID, "projectId"},
    {CALL_PROJECT_DEPENDENCIES, "projectDependencies"},
    {CALL_START_EMBEDDED, "startEmbeddedMessage"},
    {CALL_END_EMBEDDED, "endEmbeddedMessage"},
};
// Events that no operation reports.
constexpr Calls kUnreported{CALL_END_MESSAGE, CALL_PROJECT_DEPENDENCIES};

std::string namesOf(const Calls& calls, const std::string& separator) {
  std::string text;
  std::uint64_t named = 0;
  for (const Name& name : kNames) {
    if (!name.calls.areAllIn(calls) || (name.calls.bits() & ~named) == 0) continue;
    named |= name.calls.bits();
    text += (text.empty() ? "" : separator) + name.text;
  }
  return text;
}

// What stands in the boxes: their calls one below the other, so that they stay narrow.
std::string box(int state, const char* meaning, const std::string& stays, bool isMarked) {
  return "  " + std::to_string(state) + " [label=\"" + std::to_string(state) + "  " + meaning +
         (stays.empty() ? "" : "\\n\\n" + stays + "\\l") + '"' + (isMarked ? ", fillcolor=\"#e8f0e4\"" : "") + "];\n";
}

std::string arrow(int from, const Arrow& to, const char* style) {
  return "  " + std::to_string(from) + " -> " + std::to_string(to.to) + " [label=\"" + namesOf(to.on, "\\n") + '"' +
         style + "];\n";
}

std::string graph(const char* name, const std::string& content) {
  return std::string("digraph ") + name +
         " {\n  node [shape=box, style=\"rounded,filled\", fillcolor=\"#f4f4f4\", "
         "fontname=\"Helvetica\", fontsize=11];\n  edge [fontname=\"Helvetica\", fontsize=10];\n" +
         content + "}\n";
}

constexpr char kPlain[] = "";
constexpr char kGrey[] = ", color=\"#a0a0a0\", fontcolor=\"#a0a0a0\"";
constexpr char kRefused[] = ", style=dashed, color=\"#b03030\", fontcolor=\"#b03030\"";

}  // namespace

std::string workerMachine() {
  std::string content;
  for (const core::WorkerRow& row : core::kWorkerMachine) {
    std::string stays = namesOf(row.stay, "\\l");
    if (row.takesEvents) stays += "\\levents of the message";
    content += box(row.state, row.meaning, stays, row.takesEvents);
    for (const Arrow& move : row.move)
      content += arrow(row.state, move, kPlain);
  }
  return graph("worker", content);
}

std::string treeMachine() {
  std::string content;
  for (const core::TreeRow& row : core::kTreeMachine) {
    std::string stays;
    for (const Arrow& move : row.move)
      if (move.to == row.state) stays = namesOf(move.on, "\\l");
    content += box(row.state, row.meaning, stays, false);
    for (const Arrow& move : row.move)
      if (move.to != row.state) content += arrow(row.state, move, move.on.areAllIn(kUnreported) ? kGrey : kPlain);
    for (const Arrow& move : row.refuseAndMove)
      content += arrow(row.state, move, kRefused);
  }
  return graph("tree", content);
}

}  // namespace oxr::pictures
