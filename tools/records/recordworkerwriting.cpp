#include "records/recordworker.hpp"

// The writer's side of a worker: what has state while records are written is made with initializeWrite.

namespace oxr::rec {

RecordWorker::Writing::Writing(const RecordPlan& plan, const RecordForm& form, const Settings& settings)
    : writer(plan, {settings.filler, form.framing != Framing::fixed, settings.onUnknown}), framer(form) {}

void RecordWorker::initializeWrite(MessageInfo*, int, int, int) {
  RecordForm form = settings_.form;
  setLineCharacters(form, plan_.forms().front().ccsid);
  writing_ = std::make_unique<Writing>(plan_, form, settings_);
}

void RecordWorker::setFIMessageTree(const FIMessageTree* tree, bool adopt) {
  if (tree != adoptedTree_.get()) adoptedTree_.reset(adopt ? tree : nullptr);
  tree_ = tree;
}

void RecordWorker::write(WritableBitstreamBuffer* buffer, int, int) {
  if (writing_ == nullptr || tree_ == nullptr || buffer == nullptr) throw FIWriteException();
  writing_->framed.clear();
  RecordWriter& writer = writing_->writer;
  writing_->framer.add(original_.empty() ? writer.write(*tree_) : writer.write(*tree_, original_), writing_->framed);
  append(*buffer);
}

void RecordWorker::finishWriting(WritableBitstreamBuffer& buffer) {
  if (writing_ == nullptr) throw FIWriteException();
  writing_->framed.clear();
  writing_->framer.finish(writing_->framed);
  append(buffer);
}

void RecordWorker::append(WritableBitstreamBuffer& buffer) const {
  const std::string& framed = writing_->framed;
  if (!framed.empty()) buffer.appendBytes(framed.data(), static_cast<int>(framed.size()));
}

}  // namespace oxr::rec
