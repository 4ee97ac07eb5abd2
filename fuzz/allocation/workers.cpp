#include "checkedworker.hpp"
#include "fuzz/allocation/operations.hpp"
#include "messageinfo.hpp"
#include "workerinfo.hpp"
#include "workers/tree.hpp"

namespace oxr::test {
namespace {

const KelWstring kName = u"a name of more than sixteen units"_k, kUri = u"a namespace of more than some units"_k,
                 kKey = u"a key of more than sixteen units"_k;

std::string textOf(const unsigned short* text) {
  const Unfailing unfailing;
  return text != nullptr ? toUtf8(UnitView(text)) : "none";
}

// A handler that takes all and needs no memory for it.
struct Handler : fuzz::RecordingHandler {
  void startMessage(const Info&, const Info&) override {}
  int startMessageContent(const Name*, unsigned short, const Info&, int) override { return 1; }
  void startElement(const Name*, unsigned short, const Info&, int, int) override {}
  void endElement(const Name*, const Info&) override {}
};

// What finds no memory has not happened, and can be told again.
template <class Tell>
void insist(Tell tell) {
  try {
    tell();
  } catch (const std::bad_alloc&) {
    const Unfailing unfailing;
    tell();
  }
}

// Finds a content of three elements, one in the other.
struct Worker : fuzz::RecordingWorker {
  void initializeParse(int, MessageInfo*, int) override {}
  void setFIHandler(FIHandler* handler, bool) override { events = handler; }
  void parse(const BitstreamBuffer*, std::vector<int>*, int, int) override {
    const WorkerInfoPtr none;
    events->startMessage(none, none);
    insist([&] { events->startMessageContent(kName.characters(), 1, none, 0); });
    for (int i = 0; i < 3; ++i)
      insist([&] { events->startElement(kName.characters(), 1, none, 0, 0); });
    for (int i = 0; i < 3; ++i)
      events->endElement(kName.characters(), none);
  }
  void release(bool) override {}

  FIHandler* events = nullptr;
};

std::string checkedMessage() {
  Worker worker;
  Handler handler;
  oxr::CheckedWorker checker(&worker);
  checker.initializeParse(-1, nullptr);
  checker.setFIHandler(&handler, false);
  checker.parse(nullptr, nullptr, 0);
  return told(checker.openElements());
}

Tree someTree() {
  Node leaf;
  leaf.name = kName;
  leaf.value = PWFData(kUri);
  leaf.defaultValue = PWFData(u"x"_k);
  leaf.path = {{1, 12, {}}, {2, 13, {}}};
  Node root{{}, kUri, PWFData(NOTHING), PWFData(STRING), {leaf}};
  return Tree({root});
}

}  // namespace

Operations workerOperations() {
  Operations operations;
  addBoth(
      operations, "MessageInfo", [] { return std::make_shared<MessageInfo>(); },
      [](MessageInfo& info) {
        info.setProperty(kKey, kName);
        info.setProperty(kKey, kUri);
        info.setPropertyFromInteger(kName, 123456789012345678);
        MessageInfo copy;
        copy.setProperties(info);
        return textOf(copy.getProperty(kKey)) + told(copy.getPropertyAsInteger(kName));
      });
  addBoth(
      operations, "MapWorkerInfo", [] { return std::make_shared<MapWorkerInfo>(); },
      [](MapWorkerInfo& info) {
        info.setProperty(1, 7);
        info.setProperty(2, PWFData(kName));
        info.setProperty(2, PWFData("bytes", 5, BINARY, COPY));
        const MapWorkerInfo copy(info);
        MapWorkerInfo assigned;
        assigned.setProperty(3, PWFData(kUri));
        insist([&] { assigned = copy; });
        return told(assigned.getDataProperty(2)) + told(assigned.getDataProperty(3)) + told(copy.getInt32Property(1));
      });
  addBoth(
      operations, "tree iterators", [] { return sharedOf(someTree); },
      [](Tree& tree) {
        FITreeIterator it = tree.getMsgContentIterator(), other;
        it.moveToFirstChild();
        other = it;
        const FITreeIterator copy(it);
        return told(copy == other) + told(other.getData());
      });
  addBoth(
      operations, "traced tree", [] { return sharedOf(someTree); },
      [](Tree& tree) {
        KelLog::iEffectiveLogFilter = 3;
        tree.traceTree();
        FITreeIterator it = tree.getMsgContentIterator();
        tree.traceSubTree(it);
        return told(it.getData());
      });
  operations.push_back({"checked worker", []() -> Call { return checkedMessage; }});
  operations.push_back({"checker misused", []() -> Call {
                          return [] {
                            Worker worker;
                            oxr::CheckedWorker checker(&worker);
                            return checker.parseNext(), told("let");
                          };
                        }});
  return operations;
}

}  // namespace oxr::test
