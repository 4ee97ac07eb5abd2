#pragma once

#include "bitstreamworker.hpp"

namespace oxr::rec {

// The type code of an element that RecordWorker reports, and what its events are:
//
//   group  start, the elements in it, end
//   field  start, one data, end
//   array  start, one element (group or field) of the same name for each occurrence, end
//
// The `index` of startElement is the occurrence, from 0, for an element of an array, and -1 for every other element.
enum ElementType : unsigned short { kGroupElement = 1, kFieldElement = 2, kArrayElement = 3 };

// The events that a RecordWorker makes: one message a record, its elements by name. All others are refused with
// FIHandlerException. A name stays where it is, and means the same, as long as the worker's plan lives.
class RecordHandler : public FIHandler {
 public:
  // A whole field: what a RecordWorker calls in place of the three events of one. A handler that overrides it does what
  // they would, for a checker in between still makes them; fields are most of what a record has.
  virtual void field(const unsigned short* name, const PWFData& value, int index) {
    startElement(name, kFieldElement, WorkerInfoPtr::defaultWIP, index, -1);
    data(value, WorkerInfoPtr::defaultWIP, -1, -1);
    endElement(name, WorkerInfoPtr::defaultWIP);
  }

  using FIHandler::startMessageContent;
  int startMessageContent(const unsigned short*, unsigned short, const WorkerInfoPtr&, int) override { refuse(); }
  int startQualifiedMessageContent(const KelWstring&, const KelWstring&, unsigned short, const WorkerInfoPtr&,
                                   int) override {
    refuse();
  }
  void endMessageContent(int, const WorkerInfoPtr&) override { refuse(); }
  void endMessageContent(const unsigned short*, const WorkerInfoPtr&) override { refuse(); }
  void endQualifiedMessageContent(const KelWstring&, const KelWstring&, const WorkerInfoPtr&) override { refuse(); }
  using FIHandler::startElement;
  void startElement(int, unsigned short, const WorkerInfoPtr&, int, int, int, int, int) override { refuse(); }
  void startQualifiedElement(const KelWstring&, const KelWstring&, unsigned short, const WorkerInfoPtr&, int,
                             int) override {
    refuse();
  }
  using FIHandler::endElement;
  void endElement(int, const WorkerInfoPtr&) override { refuse(); }
  void endQualifiedElement(const KelWstring&, const KelWstring&, const WorkerInfoPtr&) override { refuse(); }
  void startEmbeddedMessage() override { refuse(); }
  void startEmbeddedMessage(int&) override { refuse(); }
  void endEmbeddedMessage(bool, bool) override { refuse(); }
  void unparsedContent(const void*, int, const WorkerInfoPtr&) override { refuse(); }
  void simpleElement(const PWFData&, const KelWstring&, const KelWstring&, unsigned short, const WorkerInfoPtr&,
                     const WorkerInfoPtr&, const WorkerInfoPtr&, int, int, int, int, int) override {
    refuse();
  }
  void projectId(const unsigned short*) override { refuse(); }
  void projectDependencies(const std::vector<KelWstring>&) override { refuse(); }

 private:
  [[noreturn]] static void refuse() { throw FIHandlerException(); }
};

}  // namespace oxr::rec
