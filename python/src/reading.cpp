#include "reading.hpp"

#include <utility>

#include "interpreter.hpp"

namespace py = pybind11;

namespace oxr::python {

Reading Reading::open(const rec::DecodeOptions& options, const py::object& file) {
  auto source = std::make_unique<Source>(file);
  const Released interpreter;
  return {options, std::move(source)};
}

Reading::Reading(const rec::DecodeOptions& options, std::unique_ptr<Source> source)
    : description_(options.record, console()),
      keeper_(options.onError),
      source_(std::move(source)),
      input_(source_->open(options.input.window)),
      worker_(rec::makeWorker(description_.plan(), options.input, input_, keeper_, console())) {
  worker_->setSource(&input_);
  worker_->initializeParse(-1, nullptr, -1);
}

void Reading::setHandler(FIHandler& handler, rec::FieldObserver* observer) {
  worker_->setFIHandler(&handler, false);
  worker_->setObserver(observer);
}

bool Reading::next() {
  keeper_.fields().clear();
  try {
    if (isBegun_) {
      if (!worker_->hasNext()) return false;
      worker_->parseNext();
      return true;
    }
    isBegun_ = true;
    worker_->parseFirst(input_.first(), nullptr, true, 0, -1);
    return worker_->recordsRead() != 0;
  } catch (const rec::FieldError& error) {
    throw FieldEnded(input_.name() + ": " + error.what() + worker_->hint(), keeper_.fields().back());
  } catch (const rec::FrameError& error) {
    throw RecordEnded(input_.name() + ": " + error.what(), worker_->recordNumber(), false);
  }
}

}  // namespace oxr::python
