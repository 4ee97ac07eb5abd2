#pragma once

#include <iostream>
#include <sstream>

#include "checkedworker.hpp"
#include "fuzz/harness/choices.hpp"
#include "fuzz/workers/checkermodel.hpp"
#include "fuzz/workers/recorder.hpp"

// Any sequence of calls to a checker, in all forms that they have, gets the answers of a plain model: what is refused,
// with which exception, what reaches whom with which arguments, and how many elements stay open.

namespace oxr::fuzz {

namespace checker {

// What calls are made with. Each use of a field shows in what is said.
struct Arguments {
  explicit Arguments(Choices& choices)
      : id(choices.between(0, 1)), name(choices.oneOf(kNames)), text(name == nullptr ? UnitView() : UnitView(name)) {}

  int id;
  const unsigned short* name;
  KelWstring text;
  KelWstring uri{kText, 1};
  WorkerInfoPtr info, info2, info3;
  PWFData value{STRING};
  std::vector<int> path;
  std::vector<KelWstring> list;
  const BitstreamBuffer* buffer = reinterpret_cast<const BitstreamBuffer*>(&path);
  WritableBitstreamBuffer* out = reinterpret_cast<WritableBitstreamBuffer*>(&list);
  MessageInfo* message = reinterpret_cast<MessageInfo*>(&value);
  const DictionaryInfo* descriptor = reinterpret_cast<const DictionaryInfo*>(&text);
  FIHandler* handler = nullptr;
  const FIMessageTree* tree = nullptr;

 private:
  // A name that does not fit into the room of a stack's entry, and one that a namespace and a name make together.
  static constexpr unsigned short kA[] = {'a', 0}, kTa[] = {'t', 'a', 0};
  static constexpr unsigned short kLong[] = {'s', 'e', 'v', 'e', 'n', 't', 'e', 'e', 'n',
                                             ' ', 'l', 'e', 't', 't', 'e', 'r', 's', 0};
  static constexpr const unsigned short* kNames[] = {nullptr, kA, kTa, kLong};
};

enum class To : std::uint8_t { worker, handler, tree, nobody };
enum class Stack : std::uint8_t { leave, pushId, pushName, pushQualified, popId, popName, popQualified };

constexpr int kNoEvent = -1;

// An operation: its event, who gets it, what it does to the open elements; a way to call it, which gives its result;
// and what is said then, the result after "=". S and L stand for the short and the interface's own form.
struct Operation {
  int event;
  To to;
  Stack stack;
  std::string (*run)(CheckedWorker&, Arguments&);
  std::string (*said)(CheckedWorker&, Arguments&);
};
using S = CheckedWorker;
using A = Arguments;

inline std::string nothing() {
  return "";
}
template <class Result>
std::string result(const Result& value) {
  return '=' + shown(value);
}

// clang-format off
inline const Operation kOperations[] = {
    {0, To::worker, {}, [](S& c, A& a) { return c.initializeParse(3, a.message), nothing(); },
     [](S&, A& a) { return call("initializeParse", 3, a.message, -1); }},
    {0, To::worker, {}, [](S& c, A& a) { return static_cast<FIParser&>(c).initializeParse(3, a.message, 4), nothing(); },
     [](S&, A& a) { return call("initializeParse", 3, a.message, 4); }},
    {1, To::worker, {}, [](S& c, A& a) { return c.setFIHandler(a.handler, true), nothing(); },
     [](S& c, A&) { return call("setFIHandler", static_cast<FIHandler*>(&c), false); }},
    {2, To::nobody, {}, [](S& c, A&) { return result(c.getFIHandler()); }, [](S&, A& a) { return result(a.handler); }},
    {3, To::worker, {}, [](S& c, A& a) { return c.parse(a.buffer, &a.path, 5), nothing(); },
     [](S&, A& a) { return call("parse", a.buffer, &a.path, 5, -1); }},
    {3, To::worker, {}, [](S& c, A& a) { return static_cast<FIParser&>(c).parse(a.buffer, &a.path, 5, 6), nothing(); },
     [](S&, A& a) { return call("parse", a.buffer, &a.path, 5, 6); }},
    {4, To::worker, {}, [](S& c, A& a) { return c.parseFirst(a.buffer, &a.path, true, 5), nothing(); },
     [](S&, A& a) { return call("parseFirst", a.buffer, &a.path, true, 5, -1); }},
    {4, To::worker, {}, [](S& c, A& a) { return static_cast<FIParser&>(c).parseFirst(a.buffer, &a.path, true, 5, 6), nothing(); },
     [](S&, A& a) { return call("parseFirst", a.buffer, &a.path, true, 5, 6); }},
    {5, To::worker, {}, [](S& c, A&) { return c.parseNext(), nothing(); }, [](S&, A&) { return call("parseNext"); }},
    {6, To::worker, {}, [](S& c, A&) { return result(c.hasNext()); }, [](S&, A&) { return call("hasNext") + "=0"; }},
    {7, To::worker, {}, [](S& c, A&) { return result(c.getNumBytesParsed()); }, [](S&, A&) { return call("getNumBytesParsed") + "=77"; }},
    {8, To::worker, {}, [](S& c, A& a) { bool flag = true; return c.initializeWrite(a.message, &flag), nothing(); },
     [](S&, A& a) { return call("initializeWrite", a.message, 0, 0, 0); }},
    {8, To::worker, {}, [](S& c, A& a) { return static_cast<FIWriter&>(c).initializeWrite(a.message, 1, 2, 3), nothing(); },
     [](S&, A& a) { return call("initializeWrite", a.message, 1, 2, 3); }},
    {9, To::worker, {}, [](S& c, A& a) { return c.setFIMessageTree(a.tree, true), nothing(); },
     [](S& c, A&) { return call("setFIMessageTree", static_cast<FIMessageTree*>(&c), false); }},
    {10, To::nobody, {}, [](S& c, A&) { return result(c.getFIMessageTree()); }, [](S&, A& a) { return result(a.tree); }},
    {11, To::worker, {}, [](S& c, A& a) { return c.write(a.out), nothing(); }, [](S&, A& a) { return call("write", a.out, 0, 0); }},
    {11, To::worker, {}, [](S& c, A& a) { return static_cast<FIWriter&>(c).write(a.out, 1, 2), nothing(); },
     [](S&, A& a) { return call("write", a.out, 1, 2); }},
    {12, To::worker, {}, [](S& c, A&) { return c.getWireFormatDescriptor(), nothing(); }, [](S&, A&) { return call("getWireFormatDescriptor"); }},
    {13, To::worker, {}, [](S& c, A& a) { return c.setWireFormatDescriptor(a.descriptor), nothing(); },
     [](S&, A& a) { return call("setWireFormatDescriptor", a.descriptor); }},
    {kNoEvent, To::worker, {}, [](S& c, A&) { return result(c.getWorkerName()); },
     [](S&, A&) { return call("getWorkerName") + result(kText); }},

    {15, To::handler, Stack::pushId, [](S& c, A& a) { return c.startElement(a.id, 2, a.info, 3, 4), nothing(); },
     [](S&, A& a) { return call("startElement", a.id, 2, a.info, 3, 4, -1, -1, -1); }},
    {15, To::handler, Stack::pushId, [](S& c, A& a) { return static_cast<FIHandler&>(c).startElement(a.id, 2, a.info, 3, 4, 5, 6, 7), nothing(); },
     [](S&, A& a) { return call("startElement", a.id, 2, a.info, 3, 4, 5, 6, 7); }},
    {16, To::handler, Stack::pushName, [](S& c, A& a) { return c.startElement(a.name, 2, a.info, 3), nothing(); },
     [](S&, A& a) { return call("startElement", a.name, 2, a.info, 3, -1); }},
    {16, To::handler, Stack::pushName, [](S& c, A& a) { return static_cast<FIHandler&>(c).startElement(a.name, 2, a.info, 3, 4), nothing(); },
     [](S&, A& a) { return call("startElement", a.name, 2, a.info, 3, 4); }},
    {16, To::handler, Stack::pushQualified, [](S& c, A& a) { return c.startQualifiedElement(a.uri, a.text, 2, a.info, 3, 4), nothing(); },
     [](S&, A& a) { return call("startQualifiedElement", a.uri, a.text, 2, a.info, 3, 4); }},
    {17, To::handler, Stack::popId, [](S& c, A& a) { return c.endElement(a.id, a.info), nothing(); },
     [](S&, A& a) { return call("endElement", a.id, a.info); }},
    {18, To::handler, Stack::popName, [](S& c, A& a) { return c.endElement(a.name, a.info), nothing(); },
     [](S&, A& a) { return call("endElement", a.name, a.info); }},
    {18, To::handler, Stack::popQualified, [](S& c, A& a) { return c.endQualifiedElement(a.uri, a.text, a.info), nothing(); },
     [](S&, A& a) { return call("endQualifiedElement", a.uri, a.text, a.info); }},
    {19, To::handler, {}, [](S& c, A& a) { return c.startMessage(a.info, a.info2), nothing(); },
     [](S&, A& a) { return call("startMessage", a.info, a.info2); }},
    {kNoEvent, To::handler, {}, [](S& c, A& a) { return c.endMessage(a.info), nothing(); }, [](S&, A& a) { return call("endMessage", a.info); }},
    {21, To::handler, Stack::pushId, [](S& c, A& a) { int id = a.id; const int taken = c.startMessageContent(id, 2, a.info); return result(taken) + result(id); },
     [](S&, A& a) { return call("startMessageContent", a.id, 2, a.info, -1, -1, -1, -1) + "=1" + result(a.id + 1); }},
    {21, To::handler, Stack::pushId, [](S& c, A& a) { int id = a.id; const int taken = static_cast<FIHandler&>(c).startMessageContent(id, 2, a.info, 3, 4, 5, 6); return result(taken) + result(id); },
     [](S&, A& a) { return call("startMessageContent", a.id, 2, a.info, 3, 4, 5, 6) + "=77" + result(a.id + 1); }},
    {21, To::handler, Stack::pushName, [](S& c, A& a) { return result(c.startMessageContent(a.name, 2, a.info)); },
     [](S&, A& a) { return call("startMessageContent", a.name, 2, a.info, -1) + "=1"; }},
    {21, To::handler, Stack::pushName, [](S& c, A& a) { return result(static_cast<FIHandler&>(c).startMessageContent(a.name, 2, a.info, 3)); },
     [](S&, A& a) { return call("startMessageContent", a.name, 2, a.info, 3) + "=77"; }},
    {21, To::handler, Stack::pushQualified, [](S& c, A& a) { return result(c.startQualifiedMessageContent(a.uri, a.text, 2, a.info, 3)); },
     [](S&, A& a) { return call("startQualifiedMessageContent", a.uri, a.text, 2, a.info, 3) + "=77"; }},
    {22, To::handler, Stack::popId, [](S& c, A& a) { return c.endMessageContent(a.id, a.info), nothing(); },
     [](S&, A& a) { return call("endMessageContent", a.id, a.info); }},
    {22, To::handler, Stack::popName, [](S& c, A& a) { return c.endMessageContent(a.name, a.info), nothing(); },
     [](S&, A& a) { return call("endMessageContent", a.name, a.info); }},
    {22, To::handler, Stack::popQualified, [](S& c, A& a) { return c.endQualifiedMessageContent(a.uri, a.text, a.info), nothing(); },
     [](S&, A& a) { return call("endQualifiedMessageContent", a.uri, a.text, a.info); }},
    {23, To::handler, {}, [](S& c, A& a) { return c.data(a.value, a.info), nothing(); },
     [](S&, A& a) { return call("data", a.value, a.info, -1, -1); }},
    {23, To::handler, {}, [](S& c, A& a) { return static_cast<FIHandler&>(c).data(a.value, a.info, 1, 2), nothing(); },
     [](S&, A& a) { return call("data", a.value, a.info, 1, 2); }},
    {23, To::handler, {}, [](S& c, A& a) { return c.simpleElement(a.value, a.uri, a.text, 2, a.info, a.info2, a.info3, 3, 4, 5, 6, 7), nothing(); },
     [](S&, A& a) { return call("simpleElement", a.value, a.uri, a.text, 2, a.info, a.info2, a.info3, 3, 4, 5, 6, 7); }},
    {23, To::handler, {}, [](S& c, A& a) { return c.unparsedContent(&a.id, 4, a.info), nothing(); },
     [](S&, A& a) { return call("unparsedContent", &a.id, 4, a.info); }},
    {24, To::handler, {}, [](S& c, A& a) { return c.projectId(a.name), nothing(); }, [](S&, A& a) { return call("projectId", a.name); }},
    {27, To::handler, {}, [](S& c, A& a) { return c.projectDependencies(a.list), nothing(); },
     [](S&, A& a) { return call("projectDependencies", a.list); }},
    {33, To::handler, {}, [](S& c, A&) { return c.startEmbeddedMessage(), nothing(); }, [](S&, A&) { return call("startEmbeddedMessage"); }},
    {33, To::handler, {}, [](S& c, A& a) { int id = a.id; c.startEmbeddedMessage(id); return result(id); },
     [](S&, A& a) { return call("startEmbeddedMessage", a.id) + result(a.id + 1); }},
    {34, To::handler, {}, [](S& c, A&) { return c.endEmbeddedMessage(true, false), nothing(); },
     [](S&, A&) { return call("endEmbeddedMessage", true, false); }},
    {kNoEvent, To::handler, {}, [](S& c, A& a) { return c.checkRootName(a.text, 3, a.uri), nothing(); },
     [](S&, A& a) { return call("checkRootName", a.text, 3, a.uri); }},

    {26, To::tree, {}, [](S& c, A&) { return result(c.getProjectId()); }, [](S&, A&) { return call("getProjectId") + result(kText); }},
    {26, To::tree, {}, [](S& c, A&) { return result(c.getMsgNamespaceURI()); }, [](S&, A&) { return call("getMsgNamespaceURI") + result(kText); }},
    {27, To::tree, {}, [](S& c, A&) { return result(c.getNumProjDependencies()); }, [](S&, A&) { return call("getNumProjDependencies") + "=77"; }},
    {27, To::tree, {}, [](S& c, A&) { return result(c.getProjDependency(8)); }, [](S&, A&) { return call("getProjDependency", 8) + result(kText); }},
    {28, To::tree, {}, [](S& c, A&) { return result(c.getMsgStartWorkerInfo().get()); },
     [](S&, A& a) { return call("getMsgStartWorkerInfo") + result(a.tree->getMsgStartWorkerInfo().get()); }},
    {29, To::tree, {}, [](S& c, A&) { return result(c.getMsgEndWorkerInfo().get()); },
     [](S&, A& a) { return call("getMsgEndWorkerInfo") + result(a.tree->getMsgEndWorkerInfo().get()); }},
    {30, To::tree, {}, [](S& c, A&) { return result(c.getMsgHeaderIterator().isNull()); }, [](S&, A&) { return call("getMsgHeaderIterator") + "=1"; }},
    {31, To::tree, {}, [](S& c, A&) { return result(c.getMsgContentIterator().isNull()); }, [](S&, A&) { return call("getMsgContentIterator") + "=1"; }},
    {32, To::tree, {}, [](S& c, A&) { return result(c.getMsgFooterIterator().isNull()); }, [](S&, A&) { return call("getMsgFooterIterator") + "=1"; }},
};
// clang-format on

// What `run` throws: nothing, or the exception's name.
template <class Run>
std::string refusalOf(Run run) {
  try {
    run();
    return "";
  } catch (const FIParseException&) {
    return "FIParseException";
  } catch (const FIWriteException&) {
    return "FIWriteException";
  } catch (const FIHandlerException&) {
    return "FIHandlerException";
  } catch (const FIMessageTreeException&) {
    return "FIMessageTreeException";
  }
}

// The open elements of the model after an operation was taken; nothing, or the exception's name.
inline std::string stacked(Model& model, const Operation& operation, const Arguments& a) {
  if (operation.stack == Stack::leave) return "";
  std::string plain;
  for (const unsigned short unit : a.text.view())
    plain += static_cast<char>(unit);
  const bool isStart = operation.stack < Stack::popId;
  const Stack form = isStart ? operation.stack : static_cast<Stack>(static_cast<int>(operation.stack) - 3);
  const std::string entry = form == Stack::pushId     ? '#' + std::to_string(a.id)
                            : form == Stack::pushName ? '$' + plain
                                                      : "{t}" + plain;
  if (isStart) return model.open.push_back(entry), "";
  if (model.open.empty() || model.open.back() != entry) return "FIHandlerException";
  return model.open.pop_back(), "";
}

// A checker among recorders, and the model beside it.
class Scene {
 public:
  explicit Scene(Choices& choices) : choices_(choices) {}

  void step() {
    Arguments a(choices_);
    const Operation& operation = chosen();
    if (operation.event == CALL_SET_HANDLER && choices_.upTo(15) != 0) a.handler = &handler_;
    if (operation.event == CALL_SET_TREE && choices_.upTo(15) != 0) a.tree = &tree_;
    const std::string expected = expectedOf(operation, a);
    const std::string found = foundOf(operation, a);
    requireEqual(found, expected, "a call to the checker");
  }
  std::size_t open() const { return model_.open.size(); }

 private:
  // Mostly one that the model takes: a sequence of refusals would go nowhere.
  const Operation& chosen() {
    if (choices_.upTo(7) == 0) return choices_.oneOf(kOperations);
    std::vector<const Operation*> taken;
    for (const Operation& operation : kOperations)
      if (Model after = model_; operation.event == kNoEvent || after.judge(operation.event).empty())
        taken.push_back(&operation);
    return *choices_.oneOf(taken);
  }
  std::string expectedOf(const Operation& operation, Arguments& a) {
    if (operation.event != kNoEvent)
      if (std::string refusal = model_.judge(operation.event); !refusal.empty()) return refusal;
    if (std::string refusal = stacked(model_, operation, a); !refusal.empty()) return refusal;
    if (operation.event == CALL_SET_HANDLER) setHandler_ = a.handler;
    if (operation.event == CALL_SET_TREE) setTree_ = a.tree;
    if (operation.to == To::handler && setHandler_ == nullptr) return "FIHandlerException";
    if (operation.to == To::tree && setTree_ == nullptr) return "FIMessageTreeException";
    a.handler = setHandler_;
    a.tree = setTree_;
    std::string said = operation.said(checker_, a);
    discard();
    return said;
  }
  std::string foundOf(const Operation& operation, Arguments& a) {
    std::string given;
    const std::string refusal = refusalOf([&] { given = operation.run(checker_, a); });
    return refusal + discard() + given;
  }
  // What was said since the last time: nothing where a call was refused.
  std::string discard() { return worker_.taken() + handler_.taken() + tree_.taken(); }

  Choices& choices_;
  RecordingWorker worker_;
  RecordingHandler handler_;
  RecordingTree tree_;
  FIHandler* setHandler_ = nullptr;
  const FIMessageTree* setTree_ = nullptr;
  Model model_;
  CheckedWorker checker_{&worker_};
};

// What is written to standard output in the object's life.
class CapturedOutput {
 public:
  CapturedOutput() : before_(std::cout.rdbuf(text_.rdbuf())) {}
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;
  ~CapturedOutput() { std::cout.rdbuf(before_); }
  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::streambuf* before_;
};

}  // namespace checker

inline void checkStateChecker(Choices& choices) {
  const checker::CapturedOutput output;
  std::size_t open = 0;
  {
    checker::Scene scene(choices);
    while (!choices.isEmpty())
      scene.step();
    open = scene.open();
  }
  requireEqual(output.text(), "ERROR: there were " + std::to_string(open) + " items left on idContext stack\n",
               "the last line");
}

}  // namespace oxr::fuzz
