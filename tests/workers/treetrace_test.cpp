// The trace of a message tree: its records as the host's recording sink shows them.

#include <gtest/gtest.h>

#include "harness/tracing.hpp"
#include "workers/tree.hpp"

namespace oxr::test {
namespace {

// The values in the node's record that follow one of these labels, blanks between them.
std::string traced(const Node& node, const std::string& labels) {
  const Tree tree{{node}};
  FITreeIterator it = tree.getMsgContentIterator();
  const std::string lines = tracedAt(3, [&] { tree.traceSubTree(it); });
  const std::size_t from = lines.find("TagId|");
  std::istringstream inserts(lines.substr(from, lines.find('\n', from) - from));
  std::string values;
  for (std::string label, value; std::getline(inserts, label, '|') && std::getline(inserts, value, '|');)
    if ((' ' + labels + ' ').find(' ' + label + ' ') != std::string::npos) values += ' ' + value;
  return values;
}

TEST(TreeTrace, ShowsTheTreeAndEachNodeOnTheWay) {
  Node leaf{{{"TagId", 3}, {"MemberId", 4}, {"RepeatIndex", 5}, {"Category", 1}, {"PathBasedInfoIndex", 6}}};
  leaf.numbers.insert({{"MinOccurs", 7}, {"MaxOccurs", 8}, {"Occurrences", 9}, {"MinLength", 10}, {"MaxLength", 11}});
  leaf.numbers.insert({{"IsNullable", 1}, {"HasTreeChanged", 1}});
  leaf.name = u"LEAF"_k;
  leaf.value = PWFData(7, false);
  leaf.defaultValue = PWFData(u"x"_k);
  leaf.path = {{1, 12, {}}, {2, 13, {}}};
  leaf.data = WorkerInfoPtr(new MapWorkerInfo);
  const Tree tree{{Node{{{"Category", 2}}, u"ROOT"_k, PWFData(NOTHING), PWFData(STRING), {leaf, {{{"Category", 8}}}}}}};
  const std::string plain =
      "|Occurrences|0|PathBasedInfoIndex|0|MinOccurs|0|MaxOccurs|0|MinLength|0|MaxLength|0|IsNullable|0|DefaultData|";
  const std::string end =
      "|HasTreeChanged|false|PartialMemberPath|memberPath[0]{}|StartWorkerInfo|false|DataWorkerInfo|false|"
      "EndWorkerInfo|false\n";
  const std::string out = "< FIMessageTree::traceSubTree\n", in = "> FIMessageTree::traceSubTree: TagId|";
  const std::string t = "FIMessageTree::traceTree";
  EXPECT_EQ(tracedAt(3, [&] { tree.traceTree(); }),
            "> " + t + '\n' + t + ": ProjectId|t\n" + t + ": NumProjDependencies|2\n" + t +
                ": Num|0|ProjDependency|t\n" + t + ": Num|1|ProjDependency|t\n" + t + ": MsgStartWorkerInfo|true\n" +
                in +
                "0|MemberId|0|TagName|ROOT|RepeatIndex|0|WhereDefined|Self|LogicalType|0|Data|NOTHING|Category|"
                "SELF_DEFINING_STRUCTURE|NodeType|Compound" +
                plain + "NULL" + end + in +
                "3|MemberId|4|TagName|LEAF|RepeatIndex|5|WhereDefined|TypeMember|LogicalType|4|Data|7|Category|"
                "PRE_DEFINED_FIELD|NodeType|Simple|Occurrences|9|PathBasedInfoIndex|6|MinOccurs|7|MaxOccurs|8|"
                "MinLength|10|MaxLength|11|IsNullable|1|DefaultData|x|HasTreeChanged|true|PartialMemberPath|"
                "memberPath[2]{{12,1}{13,2}}|StartWorkerInfo|false|DataWorkerInfo|true|EndWorkerInfo|false\n" +
                out + in +
                "0|MemberId|0|TagName||RepeatIndex|0|WhereDefined|Self|LogicalType|0|Data|NOTHING|Category|"
                "ERROR invalid|NodeType|Message" +
                plain + "NOTHING" + end + out + out + t + ": MsgEndWorkerInfo|false\n< " + t + '\n');
  EXPECT_EQ(tree.taken(), "getProjectIdgetProjDependency 0getProjDependency 1getMsgStartWorkerInfo");
  EXPECT_EQ(tracedAt(2, [&] { tree.traceTree(); }), "");
  FITreeIterator it = tree.getMsgContentIterator(), null;
  tree.traceSubTree(it);
  EXPECT_TRUE(it == tree.getMsgContentIterator());  // it ends where it began
  EXPECT_EQ(tracedAt(3, [&] { tree.traceSubTree(null); }), "");
}

// Where a node without a member is defined: with a tag, with a type, with neither.
TEST(TreeTrace, LabelsFollowTheCategory) {
  std::istringstream labels(
      " SELF_DEFINING_FIELD Simple Self Self Self; PRE_DEFINED_FIELD Simple Tag Type Unknown;"
      " SELF_DEFINING_STRUCTURE Compound Self Self Self; PRE_DEFINED_STRUCTURE Compound Tag Type Unknown;"
      " UN_PARSED_BUFFER UnparsedBuffer Unknown Unknown Unknown; SELF_DEFINING_MESSAGE Message Self Self Self;"
      " PRE_DEFINED_MESSAGE Message Tag Type Unknown; ERROR invalid Message Tag Type Unknown;"
      " ERROR invalid Message Self Self Self; TYPE_DEFINED_FIELD Simple Tag Type Unknown;"
      " TYPE_DEFINED_STRUCTURE Compound Tag Type Unknown; TYPE_DEFINED_MESSAGE Message Tag Type Unknown;"
      " LIST_TYPE_STRUCTURE Compound Tag Type Unknown; ERROR invalid Message Tag Type Unknown;"
      " ERROR invalid Message Tag Type Unknown;");
  for (const int category : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, -1}) {
    const auto where = [&](const char* label, int number, int type) {
      return traced(Node{{{"Category", category}, {label, number}, {"TypeIndex", type}}}, "WhereDefined");
    };
    std::string expected;
    std::getline(labels, expected, ';');
    EXPECT_EQ(traced(Node{{{"Category", category}}}, "Category NodeType") + where("TagId", 1, 0) +
                  where("TagId", 0, 0) + where("TagId", 0, -1),
              expected);
    EXPECT_EQ(where("MemberId", 1, 0), " TypeMember");
  }
}

TEST(TreeTrace, ShowsAValueThatHasNoTextAsInvalid) {
  PWFDateTime never{};
  never._month = 99;
  EXPECT_EQ(traced(Node{{}, {}, PWFData(never)}, "Data LogicalType"), " 15 INVALID");
}

}  // namespace
}  // namespace oxr::test
