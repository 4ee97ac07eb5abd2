// Plays the broker: has a line parsed into a tree, changes a value of it, has the tree written, and shows what a
// checker refuses. docs/workers.md walks through it.

#include <checkedworker.hpp>
#include <growingbytebuffer.hpp>
#include <iostream>
#include <kelexception.hpp>
#include <kelwstringconvertor.hpp>

#include "csvworker.hpp"
#include "memorytree.hpp"

namespace {

BitstreamWorker* makeWorker() {
  return new CsvWorker(
      {{oxr::fromUtf8("id"), DECIMAL}, {oxr::fromUtf8("name"), STRING}, {oxr::fromUtf8("balance"), DECIMAL}});
}

// The checker ends with its worker, however the work goes.
struct Release {
  void operator()(oxr::CheckedWorker* checker) const { checker->release(true); }
};
using Checked = std::unique_ptr<oxr::CheckedWorker, Release>;

void parse(std::string_view line, MessageInfo& info, FIHandler& handler) {
  ReadOnlyByteBuffer buffer;
  buffer.create(line.data(), static_cast<int>(line.size()));
  const Checked worker(new oxr::CheckedWorker(makeWorker()));
  worker->initializeParse(-1, &info);
  worker->setFIHandler(&handler, false);
  worker->parse(&buffer, nullptr, 0);
  std::cout << "parsed " << worker->getNumBytesParsed() << " bytes\n";
}

std::string write(const FIMessageTree& tree, MessageInfo& info) {
  oxr::GrowingByteBuffer buffer;
  const Checked worker(new oxr::CheckedWorker(makeWorker()));
  worker->initializeWrite(&info, nullptr);
  worker->setFIMessageTree(&tree, false);
  worker->write(&buffer);
  return std::string(buffer.bytes());
}

void show(FITreeIterator node, const std::string& indent) {
  const PWFData value = node.getData();
  std::cout << indent << oxr::toUtf8(oxr::UnitView(node.getTagName()));
  if (value.isNull())
    std::cout << " is null";
  else if (!value.isNothing())
    std::cout << " = " << oxr::toUtf8(oxr::UnitView(static_cast<const unsigned short*>(value.getDataValue())));
  std::cout << '\n';
  for (bool more = node.moveToFirstChild(); more; more = node.moveToNextSibling())
    show(node, indent + "  ");
}

template <class Call>
void showRefusal(const char* what, Call call) {
  try {
    call();
    std::cout << what << ": taken\n";
  } catch (const FIHandlerException&) {
    std::cout << what << ": FIHandlerException\n";
  } catch (const FIParseException&) {
    std::cout << what << ": FIParseException\n";
  } catch (const KelRecoverableException& failure) {
    std::cout << what << ": " << oxr::toUtf8(failure.toString()) << '\n';
  }
}

}  // namespace

int main() {
  MessageInfo info;
  info.setPropertyFromInteger(MI_CCSID_STR, 1208);

  MemoryTree tree;
  TreeBuilder builder(tree);
  parse("7,Ada Winterbourne,-12.50\n", info, builder);
  show(tree.getMsgContentIterator(), "  ");

  tree.top().children[0]->children[2]->value = PWFData(oxr::fromUtf8("1250.75").characters(), DECIMAL);
  std::cout << write(tree, info);

  MemoryTree another;
  TreeBuilder other(another);
  showRefusal("a line with a field too many", [&] { parse("7,Ada,Winterbourne,-12.50\n", info, other); });
  showRefusal("an amount that is none", [&] { parse("7,Ada,much\n", info, other); });

  const Checked checker(new oxr::CheckedWorker(makeWorker()));
  showRefusal("parse before initializeParse", [&] { checker->parse(nullptr, nullptr, 0); });
  checker->initializeParse(-1, &info);
  checker->setFIHandler(&other, false);
  ReadOnlyByteBuffer line;
  line.create("1,x,2", 5);
  showRefusal("the first message", [&] { checker->parse(&line, nullptr, 0); });
  showRefusal("a second message", [&] { checker->parse(&line, nullptr, 0); });
}
