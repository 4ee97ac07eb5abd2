// The trace of a tree: a record for the tree, and one for each node on the way through it. The walk takes place with
// trace off too, and each node is read: what a tree does when it is asked must not depend on the level of the trace.

#include "fimessagetree.hpp"

#include <locale>
#include <sstream>

#include "kelwstringconvertor.hpp"
#include "workers/nodelabels.hpp"

namespace {

constexpr char kTree[] = "FIMessageTree::traceTree";
constexpr char kSubTree[] = "FIMessageTree::traceSubTree";

bool isTraceOn() {
  return KelLog::iEffectiveLogFilter > 2;
}

bool hasObject(const WorkerInfoPtr& info) {
  return info.get() != nullptr;
}

// A value as a record shows it.
PWFData shownValue(const PWFData& value) {
  static const PWFData nothing(oxr::fromUtf8("NOTHING"));
  static const PWFData null(oxr::fromUtf8("NULL"));
  if (value.isNothing()) return nothing;
  return value.isNull() ? null : value.getDebugString();
}

// The members that lead to the node, each by its id and its index.
std::string memberPath(const std::vector<PartialMember>& members) {
  std::ostringstream path;
  path.imbue(std::locale::classic());  // no digit grouping, whatever the process's locale
  path << "memberPath[" << members.size() << "]{";
  for (const PartialMember& member : members)
    path << '{' << member.id << ',' << member.index << '}';
  path << '}';
  return path.str();
}

// What the record of a node shows. The node is read before the record is begun: reading may raise.
class NodeRecord {
 public:
  // The members are in the order in which a node is read, which is part of the contract.
  explicit NodeRecord(const FITreeIterator& node)
      : tagName(node.getTagName()),
        data(node.getData()),
        defaultData(shownValue(node.getDefaultData())),
        shownData(shownValue(data)),
        memberId(node.getMemberId()),
        tagId(node.getTagId()),
        category(node.getCategory()),
        repeatIndex(node.getRepeatIndex()),
        pathBasedInfoIndex(node.getPathBasedInfoIndex()),
        minOccurs(node.getMinOccurs()),
        maxOccurs(node.getMaxOccurs()),
        minLength(node.getMinLength()),
        maxLength(node.getMaxLength()),
        isNullable(node.getIsNullable()),
        occurrences(node.getOccurrences()),
        hasStart(hasObject(node.getStartWorkerInfo())),
        hasData(hasObject(node.getDataWorkerInfo())),
        hasEnd(hasObject(node.getEndWorkerInfo())),
        hasTreeChanged(node.hasTreeChanged()),
        definition(oxr::whereDefined(category, memberId, tagId, node.getTypeIndex())),
        path(memberPath(*node.getPartialMemberPath())) {}

  // The order of the inserts is part of the contract, too.
  void addTo(KelLog::Item& item) const {
    const oxr::NodeKind& kind = oxr::nodeKind(category);
    item << "TagId" << tagId << "MemberId" << memberId << "TagName" << tagName << "RepeatIndex" << repeatIndex;
    item << "WhereDefined" << definition << "LogicalType" << static_cast<int>(data.getDataLogicalType());
    item << "Data" << shownData.getPWFStringValue() << "Category" << kind.category << "NodeType" << kind.nodeType;
    item << "Occurrences" << occurrences << "PathBasedInfoIndex" << pathBasedInfoIndex << "MinOccurs" << minOccurs;
    item << "MaxOccurs" << maxOccurs << "MinLength" << minLength << "MaxLength" << maxLength;
    item << "IsNullable" << isNullable << "DefaultData" << defaultData.getPWFStringValue();
    item << "HasTreeChanged" << hasTreeChanged << "PartialMemberPath" << path;
    item << "StartWorkerInfo" << hasStart << "DataWorkerInfo" << hasData << "EndWorkerInfo" << hasEnd;
  }

 private:
  const unsigned short* tagName;
  PWFData data, defaultData, shownData;
  int memberId, tagId, category, repeatIndex, pathBasedInfoIndex;
  int minOccurs, maxOccurs, minLength, maxLength, isNullable, occurrences;
  bool hasStart, hasData, hasEnd, hasTreeChanged;
  const char* definition;
  std::string path;
};

// Reads a node and, with trace on, writes its entry. The record is out before those of the nodes below.
long traceNode(const FITreeIterator& node) {
  const NodeRecord record(node);
  long handle = 0;
  if (!isTraceOn()) return handle;
  KelLog::EntryItem item(kSubTree, &handle);
  record.addTo(item);
  return handle;
}

}  // namespace

FIMessageTree::~FIMessageTree() = default;

void FIMessageTree::traceTree() const {
  const bool isTraced = isTraceOn();
  const long handle = isTraced ? KelLog::writeEntry(this, kTree) : 0;
  // What the tree answers is asked for in this order.
  const auto trace = [&](const auto&... inserts) {
    KelLog::TraceItem item(this, kTree, handle);
    (item << ... << inserts);
  };
  if (isTraced) trace("ProjectId", getProjectId());
  const int dependencies = getNumProjDependencies();
  if (isTraced) trace("NumProjDependencies", dependencies);
  for (int i = 0; isTraced && i < dependencies; ++i)
    trace("Num", i, "ProjDependency", getProjDependency(i));
  if (isTraced) trace("MsgStartWorkerInfo", hasObject(getMsgStartWorkerInfo()));
  if (FITreeIterator content = getMsgContentIterator(); !content.isNull()) traceSubTree(content);
  if (isTraced) trace("MsgEndWorkerInfo", hasObject(getMsgEndWorkerInfo()));
  if (isTraced) KelLog::writeExit(this, kTree, handle);
}

void FIMessageTree::traceSubTree(FITreeIterator& it) const {
  if (it.isNull()) return;
  const long handle = traceNode(it);
  if (it.moveToFirstChild()) {
    do
      traceSubTree(it);
    while (it.moveToNextSibling());
    it.moveToParent();
  }
  if (isTraceOn()) KelLog::writeExit(this, kSubTree, handle);
}
