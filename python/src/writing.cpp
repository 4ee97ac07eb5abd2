#include "writing.hpp"

#include <pybind11/stl.h>

#include <algorithm>
#include <exception>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "arguments.hpp"
#include "growingbytebuffer.hpp"
#include "interpreter.hpp"
#include "jsontext.hpp"
#include "oxrrec/encode/unnesting.hpp"
#include "oxrrec/nesting.hpp"
#include "records/counted.hpp"
#include "records/program/reading.hpp"
#include "values.hpp"

namespace py = pybind11;

namespace oxr::python {

namespace {

constexpr std::size_t kBatchBytes = std::size_t{256} << 10;
constexpr std::uint64_t kToldRecords = 20;

// Where records go: a file that gets its name when all is written, or an object with a method write.
class Target {
 public:
  Target(const py::object& target, const rec::Layout& layout) {
    if (py::isinstance<py::bytes>(target)) {
      const auto path = py::cast<std::string>(target);
      file_.emplace(released([&] { return rec::FileOutput::open(path, layout.fileNames, -1); }));
      return;
    }
    write_ = target.attr("write");
    isRaw_ = py::isinstance(target, py::module_::import("io").attr("RawIOBase"));
  }
  void write(std::string_view bytes) {
    if (file_)
      released([&] { file_->write(bytes); });
    else
      give(bytes);
  }
  void close() {
    if (file_) released([&] { file_->close(); });
  }

 private:
  void give(std::string_view bytes);

  std::optional<rec::FileOutput> file_;
  py::object write_;
  bool isRaw_ = false;
};

// A raw file may take only the first of the bytes, which it tells, or none with None. Other objects may return nothing.
void Target::give(std::string_view bytes) {
  while (!bytes.empty()) {
    const py::bytes given(bytes.data(), bytes.size());
    const py::object taken = owned(orStay([&] { return PyObject_CallOneArg(write_.ptr(), given.ptr()); }));
    if (taken.is_none() && isRaw_)
      throw rec::ToolError("the output takes no bytes now: a file that does not wait cannot be written");
    if (!py::isinstance<py::int_>(taken) || py::isinstance<py::bool_>(taken)) return;
    const Py_ssize_t count = PyLong_AsSsize_t(taken.ptr());
    if (PyErr_Occurred() != nullptr) throw py::error_already_set();
    if (count <= 0) throw rec::ToolError("write() of the output takes none of the bytes");
    bytes.remove_prefix(std::min(static_cast<std::size_t>(count), bytes.size()));
  }
}

// No record is read.
class NoFaults : public rec::FaultListener {
 public:
  bool goOnAfter(const rec::FieldFault&) override { return false; }
};

// Records as lines become bytes. Needs no interpreter.
class Writing {
 public:
  Writing(const rec::EncodeOptions& options, const rec::RecordPlan& plan)
      : isSkipping_(options.onError == rec::OnError::skip),
        worker_(rec::RecordWorker::make(plan, options.records, faults_)),
        reader_(plan.names()) {
    try {
      if (!options.nest.empty()) unnesting_.emplace(options.nest, plan);
    } catch (const rec::ToolError& error) {
      throw OptionFault(error.what());
    }
    worker_->initializeWrite(nullptr, 0, 0, 0);
  }

  // Throw RecordEnded for a record that does not fit, unless such are left out.
  void addAll(std::string& lines, const std::vector<std::size_t>& ends) {
    lines.reserve(lines.size() + rec::JsonReader::kPadding);
    std::size_t begin = 0;
    for (const std::size_t end : ends) {
      add(std::string_view(lines).substr(begin, end - 1 - begin));
      begin = end;
    }
  }
  void add(std::string_view line) {
    ++lines_;
    try {
      write(reader_.read(line));
    } catch (const rec::JsonLineError& error) {
      tell(error.what(), {});
    }
  }
  // A record that no line can be made of.
  void refuse(const ValueFault& fault) {
    ++lines_;
    tell(fault.path.empty() ? fault.what() : fault.path + ": " + fault.what(), fault.path);
  }
  void finish() { worker_->finishWriting(buffer_); }
  std::string_view bytes() const { return buffer_.bytes(); }
  void clear() { buffer_.setLength(0); }
  std::uint64_t written() const { return written_; }
  // Of what was left out, a line each.
  std::string notes() const {
    const std::uint64_t bad = bad_ + left_;
    return bad == 0 ? std::string() : notes_.str() + rec::counted(bad, "record") + " left out\n";
  }

 private:
  void write(rec::JsonTree& tree) {
    if (!unnesting_) {
      write(tree, {});
      return;
    }
    const auto left = unnesting_->writeAll(
        tree, isSkipping_,
        [this](const rec::JsonTree& record, const std::string& path) { return write(record, path); });
    left_ += left.withBad;
  }
  rec::Unnesting::Written write(const rec::JsonTree& tree, const std::string& path) {
    try {
      worker_->setFIMessageTree(&tree, false);
      worker_->write(&buffer_, 0, 0);
      ++written_;
      return rec::Unnesting::Written::isGood;
    } catch (const rec::UnknownRecord&) {
      return rec::Unnesting::Written::isUnknown;
    } catch (const rec::WriteError& error) {
      const std::string what = path.empty() ? error.what() : error.within(path);
      const std::size_t colon = what.find(": ");
      tell(what, colon == std::string::npos ? "" : what.substr(0, colon));
    } catch (const rec::FrameError& error) {
      tell(error.what(), {});
    }
    return rec::Unnesting::Written::isBad;
  }

  void tell(const std::string& what, const std::string& path) {
    const std::string text = "record " + std::to_string(lines_) + ", " + what;
    if (!isSkipping_) throw RecordEnded(text, lines_, true, path);
    if (++bad_ <= kToldRecords) notes_ << text << '\n';
  }

  const bool isSkipping_;
  NoFaults faults_;
  rec::RecordWorker::Owner worker_;
  rec::JsonReader reader_;
  std::optional<rec::Unnesting> unnesting_;
  GrowingByteBuffer buffer_;
  std::ostringstream notes_;
  std::uint64_t lines_ = 0;
  std::uint64_t written_ = 0;
  std::uint64_t bad_ = 0;
  std::uint64_t left_ = 0;  // children of records that were left out
};

// Writes the lines, whose ends are given, and forgets them. What ends the work comes after the records before it.
void writeLines(Writing& writing, std::string& lines, std::vector<std::size_t>& ends, Target& target) {
  std::exception_ptr ending;
  {
    const Released interpreter;
    try {
      writing.addAll(lines, ends);
    } catch (...) {
      ending = std::current_exception();
    }
  }
  target.write(writing.bytes());
  if (ending) std::rethrow_exception(ending);
  writing.clear();
  lines.clear();
  ends.clear();
}

// Null after the last one.
py::object nextOf(const py::object& records) {
  PyObject* const record = orStay([&] { return PyIter_Next(records.ptr()); });
  if (record == nullptr && PyErr_Occurred() != nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(record);
}

py::tuple write(const Arguments& arguments, const py::object& target, const py::object& given) {
  const auto options = readArguments(arguments, rec::addRecordWritingOptions);
  std::ostringstream notes;
  const auto description = released([&] { return rec::Description(options.record, {0, 1, notes, false, "oxrrec"}); });
  Writing writing(options, description.plan());
  const RecordText text(description.plan());
  Target output(target, description.plan().layout());
  const py::object records = owned(PyObject_GetIter(given.ptr()));
  std::string lines;
  std::vector<std::size_t> ends;
  while (const py::object record = nextOf(records)) {
    try {
      text.append(record, lines);
      ends.push_back(lines.size());
    } catch (const ValueFault& fault) {
      writeLines(writing, lines, ends, output);  // those before it
      writing.refuse(fault);
    }
    if (lines.size() >= kBatchBytes) writeLines(writing, lines, ends, output);
  }
  writeLines(writing, lines, ends, output);
  writing.finish();
  output.write(writing.bytes());
  output.close();
  return py::make_tuple(writing.written(), notes.str() + writing.notes());
}

}  // namespace

void addWriter(py::module_& module) {
  module.def("write", &write);
}

}  // namespace oxr::python
