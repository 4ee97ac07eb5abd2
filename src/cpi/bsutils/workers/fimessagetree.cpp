// The trace of a tree: a record for the tree, and one for each node on the way through it. The walk takes place with
// trace off too; what a record shows is asked for only if it is written.

#include "fimessagetree.hpp"

#include <locale>
#include <sstream>

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

void addValue(KelLog::Item& item, const PWFData& value) {
  if (value.isNothing())
    item << "NOTHING";
  else if (value.isNull())
    item << "NULL";
  else
    item << value.getDebugString().getPWFStringValue();
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

// The order in which a node is read is part of the contract, as is that of the inserts.
void addNode(KelLog::Item& item, const FITreeIterator& node) {
  const unsigned short* const name = node.getTagName();
  const PWFData data = node.getData();
  const PWFData defaultData = node.getDefaultData();
  const int memberId = node.getMemberId();
  const int tagId = node.getTagId();
  const int logicalType = data.getDataLogicalType();
  const int category = node.getCategory();
  const oxr::NodeKind& kind = oxr::nodeKind(category);
  const int repeatIndex = node.getRepeatIndex();
  const int pathBasedInfoIndex = node.getPathBasedInfoIndex();
  const int minOccurs = node.getMinOccurs(), maxOccurs = node.getMaxOccurs();
  const int minLength = node.getMinLength(), maxLength = node.getMaxLength();
  const int isNullable = node.getIsNullable();
  const int occurrences = node.getOccurrences();
  const bool hasStart = hasObject(node.getStartWorkerInfo());
  const bool hasData = hasObject(node.getDataWorkerInfo());
  const bool hasEnd = hasObject(node.getEndWorkerInfo());
  const bool hasTreeChanged = node.hasTreeChanged();
  item << "TagId" << tagId << "MemberId" << memberId << "TagName" << name << "RepeatIndex" << repeatIndex;
  item << "WhereDefined" << oxr::whereDefined(category, memberId, tagId, node.getTypeIndex());
  item << "LogicalType" << logicalType << "Data";
  addValue(item, data);
  item << "Category" << kind.category << "NodeType" << kind.nodeType << "Occurrences" << occurrences;
  item << "PathBasedInfoIndex" << pathBasedInfoIndex << "MinOccurs" << minOccurs << "MaxOccurs" << maxOccurs;
  item << "MinLength" << minLength << "MaxLength" << maxLength << "IsNullable" << isNullable << "DefaultData";
  addValue(item, defaultData);
  item << "HasTreeChanged" << hasTreeChanged << "PartialMemberPath" << memberPath(*node.getPartialMemberPath());
  item << "StartWorkerInfo" << hasStart << "DataWorkerInfo" << hasData << "EndWorkerInfo" << hasEnd;
}

// Writes the entry of a node. The record is out before those of the nodes below.
long traceNode(const FITreeIterator& node) {
  long handle = 0;
  KelLog::EntryItem item(kSubTree, &handle);
  addNode(item, node);
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
  const bool isTraced = isTraceOn();
  const long handle = isTraced ? traceNode(it) : 0;
  if (it.moveToFirstChild()) {
    do
      traceSubTree(it);
    while (it.moveToNextSibling());
    it.moveToParent();
  }
  if (isTraced) KelLog::writeExit(this, kSubTree, handle);
}
