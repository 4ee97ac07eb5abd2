#include "records/parallel/recordwalk.hpp"

namespace oxr::rec {

// Takes what a worker tells, and goes on after each fault.
struct RecordWalk::Silence : public RecordHandler, public FaultListener {
  using RecordHandler::endElement;
  using RecordHandler::startElement;
  void startMessage(const WorkerInfoPtr&, const WorkerInfoPtr&) override {}
  void endMessage(const WorkerInfoPtr&) override {}
  void startElement(const unsigned short*, unsigned short, const WorkerInfoPtr&, int, int) override {}
  void endElement(const unsigned short*, const WorkerInfoPtr&) override {}
  void data(const PWFData&, const WorkerInfoPtr&, int, int) override {}
  bool goOnAfter(const FieldFault&) override { return true; }
};

RecordWalk::RecordWalk(const RecordPlan& plan, const RecordWorker::Settings& settings, BufferSource& source)
    : source_(source), reader_(recordForm(plan, settings.form)) {
  if (reader_.isFramed() || !plan.isVariable()) return;
  silence_ = std::make_unique<Silence>();
  worker_ = RecordWorker::make(plan, settings, *silence_);
  worker_->setSource(&source_);
  worker_->initializeParse(-1, nullptr, -1);
  worker_->setFIHandler(silence_.get(), false);
}

RecordWalk::RecordWalk(const RecordForm& form, BufferSource& source) : source_(source), reader_(form) {}

RecordWalk::~RecordWalk() = default;

bool RecordWalk::step() {
  const bool went = worker_ != nullptr ? stepByWorker() : stepByReader();
  isOpen_ = true;
  if (went) ++records_;
  return went;
}

bool RecordWalk::stepByReader() {
  if (!isOpen_) reader_.open(source_.slide(0, 1), 0, &source_);
  if (reader_.atEnd()) return false;
  reader_.finish(reader_.next().size);
  return true;
}

bool RecordWalk::stepByWorker() {
  if (!isOpen_) {
    worker_->parseFirst(source_.slide(0, 1), nullptr, true, 0, -1);
    return worker_->recordsRead() != 0;
  }
  if (!worker_->hasNext()) return false;
  worker_->parseNext();
  return true;
}

std::uint64_t RecordWalk::position() const {
  return worker_ != nullptr ? static_cast<std::uint64_t>(worker_->getNumBytesParsed()) : reader_.position();
}

}  // namespace oxr::rec
