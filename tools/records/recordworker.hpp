#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bitstreamworker.hpp"
#include "records/fields/fields.hpp"
#include "records/framing/framing.hpp"
#include "records/framing/recordframer.hpp"
#include "records/onunknown.hpp"
#include "records/plan/chooser.hpp"
#include "records/recordhandler.hpp"
#include "records/recordplan.hpp"
#include "records/recordwriting.hpp"

namespace oxr::rec {

// The form with what the plan adds to it: the sizes of records, and the characters of lines.
RecordForm recordForm(const RecordPlan& plan, RecordForm form);

// The parser of record files: one message a record, in the events that RecordHandler describes.
//
// parseFirst reads the first record, parseNext each further one; parse reads all. An input without a byte has no
// record, and parseFirst then makes no event.
//
// A field that cannot be read goes to the fault listener, which ends the work (a FieldError leaves the parse call, the
// message unfinished) or has the worker go on with a null. An input that cannot be cut into records ends it with a
// FrameError. Calls out of order throw FIParseException.
//
// The writer's side takes trees with the same elements, one a record, see RecordWriter. Each write() appends a record
// and what stands around it; where records share blocks it appends the block once that is full, and finishWriting() the
// last one. A tree that does not fit throws WriteError or FrameError and leaves the buffer as it was. Calls out of
// order throw FIWriteException.
//
// Example:
//   const auto worker = RecordWorker::make(plan, RecordWorker::Settings{}, listener);
//   worker->setSource(&input);
//   worker->initializeParse(-1, nullptr, -1);
//   worker->setFIHandler(&handler, false);
//   worker->parseFirst(input.first(), nullptr, true, 0, -1);
//   while (worker->hasNext()) worker->parseNext();
class RecordWorker final : public BitstreamWorker {
 public:
  struct Settings {
    RecordForm form;          // isVariable and maxSize are the plan's
    bool allowExtra = false;  // a record may be longer than its layout
    OnUnknown onUnknown = OnUnknown::isError;
    std::optional<unsigned char> filler{};  // written where no field gives a byte; see RecordTemplate if nothing
  };
  struct Release {
    void operator()(RecordWorker* worker) const { worker->release(true); }
  };
  using Owner = std::unique_ptr<RecordWorker, Release>;

  // The plan and the listener must outlive the worker. Throws KelRecoverableException for an unknown code page.
  static Owner make(const RecordPlan& plan, const Settings& settings, FaultListener& listener);

  // Where the input goes on after the buffer that parse or parseFirst gets; null, as at first, if it ends there. The
  // source must live until the last record was read.
  void setSource(BufferSource* source) { source_ = source; }
  // Who sees each field as it is read; null, as at first, for nobody.
  void setObserver(FieldObserver* observer) { observer_ = observer; }
  // The names that matter to who asks for kinds. None, as at first: all alike.
  void setKindsOfInterest(std::vector<std::string> names) { kindsOfInterest_ = std::move(names); }
  // What the last record is, as the condition named it that chose: the group that its area holds, else the level 01
  // entry; of these, one of interest before all others. Empty where no condition chose.
  std::string_view kindOfRecord() const { return kindName_; }
  // The bytes of the record in hand, as far as the input has them, for whoever hears of it while it is read and for who
  // catches what ended that. Of a variable record that is not framed: what the input still has, up to the longest.
  std::span<const unsigned char> recordInHand() const { return {record_.data, record_.size - record_.padding}; }
  // Where it begins in the input.
  std::uint64_t offsetInInput() const { return reader_.offsetInInput(0); }
  // The records of no kind that were skipped.
  std::uint64_t recordsSkipped() const { return skipped_; }
  // The layout of the last record.
  const Layout& layoutOfRecord() const { return *kind_->layout; }
  // Records read so far, the one that a fault ended included.
  std::uint64_t recordsRead() const { return reader_.recordsRead(); }
  // The number of the last one in the file, from 1.
  std::uint64_t recordNumber() const { return reader_.recordNumber(); }
  // See RecordReader::hint: to be told with faults.
  std::string hint() const { return reader_.hint(); }

  void initializeParse(int mode, MessageInfo* info, int flags) override;
  void setFIHandler(FIHandler* handler, bool adopt) override;
  FIHandler* getFIHandler() const override { return handler_; }
  void parse(const BitstreamBuffer* buffer, std::vector<int>* path, int offset, int flags) override;
  // `path`, `isWholeMessage` and `flags` are not looked at.
  void parseFirst(const BitstreamBuffer* buffer, std::vector<int>* path, bool isWholeMessage, int offset,
                  int flags) override;
  void parseNext() override;
  bool hasNext() const override { return isOpen_ && !reader_.atEnd(); }
  PWFInt64 getNumBytesParsed() const override { return static_cast<PWFInt64>(reader_.position()); }

  void initializeWrite(MessageInfo* info, int mode, int encoding, int flags) override;
  void setFIMessageTree(const FIMessageTree* tree, bool adopt) override;
  const FIMessageTree* getFIMessageTree() const override { return tree_; }
  void write(WritableBitstreamBuffer* buffer, int mode, int flags) override;
  // Appends the last block, if records wait in one.
  void finishWriting(WritableBitstreamBuffer& buffer);
  // The next records that are written take the bytes that nobody gives from this one. Empty, as at first: from nowhere.
  void setOriginal(std::span<const unsigned char> original) { original_ = original; }

  const DictionaryInfo* getWireFormatDescriptor() const override { return descriptor_; }
  void setWireFormatDescriptor(const DictionaryInfo* descriptor) override { descriptor_ = descriptor; }
  void release(bool) override { delete this; }
  const unsigned short* getWorkerName() const override;

 private:
  // A count that arrays go by.
  struct Counter {
    enum class State : std::uint8_t { unread, good, bad } state = State::unread;
    std::int64_t value = 0;
    const Step* step = nullptr;  // of its field
    std::uint64_t at = 0;        // of its field in the record
  };
  struct OpenLoop {
    std::uint32_t count;
    std::int64_t shiftBefore;  // at the array's start
    std::uint64_t at;          // of the occurrence in hand in the record
  };

  struct Writing {
    Writing(const RecordPlan& plan, const RecordForm& form, const Settings& settings);
    RecordWriter writer;
    RecordFramer framer;
    std::string framed;  // the last record with what stands around it
  };

  RecordWorker(const RecordPlan& plan, const Settings& settings, FaultListener& listener);
  ~RecordWorker() override = default;

  void append(WritableBitstreamBuffer& buffer) const;
  void readRecord();
  void beginRecord();
  void readKnown();
  bool findKind();
  void nameKind(std::string_view name);
  bool passUnknown();
  void showRaw(std::span<const unsigned char> bytes);
  std::int32_t decide(Chooser& chooser);
  std::uint64_t placeOf(const Question& question) const;
  PWFData valueOrNull(const Step& step, const unsigned char* bytes);
  const Step* choose(const Step& step);
  void passArea(const Step& step, const Choice& choice);
  void walk();
  const Step* pass(const Step& step);
  void field(const Step& step);
  void fieldWithCare(const Step& step);
  void tell(const unsigned short* name, const PWFData& value, int index) {
    if (records_ != nullptr) return records_->field(name, value, index);
    tellInEvents(name, value, index);
  }
  void tellInEvents(const unsigned short* name, const PWFData& value, int index);
  [[gnu::always_inline]] PWFData read(const Step& step);
  [[gnu::always_inline]] PWFData convert(const Step& step, std::uint64_t at);
  PWFData refused(const Step& step, std::uint64_t at, int message, std::string said);
  PWFData readStart(const Step& step, std::uint64_t at);
  PWFData cutOff(const Step& step, std::uint64_t at);
  PWFData failed(const Step& step, std::uint64_t at, FaultReason reason);
  const Step* beginArray(const Step& step);
  const Step* endArray(const Step& step);
  void keepCount(const Step& step, const PWFData& value);
  std::int64_t countFor(const Step& array);
  void checkLength();
  std::size_t indexOf(const Step& step) const { return static_cast<std::size_t>(&step - plan_.steps().data()); }
  int occurrence(const Step& step) const;
  std::span<const unsigned char> bytesAt(std::uint64_t offset, std::uint32_t size) const;
  FieldFault fault(ItemIndex item, std::uint64_t offset, std::uint32_t size, FaultReason reason) const;
  void report(const FieldFault& fault);
  void observe(const Step& step, std::uint64_t at, const PWFData& value, const FieldFault* fault);

  const RecordPlan& plan_;
  const Settings settings_;
  FaultListener& listener_;
  std::vector<std::unique_ptr<FieldConverter>> converters_;  // by Step::form
  std::optional<Chooser> recordChooser_;
  std::vector<Chooser> choosers_;  // by Step::choice
  RecordReader reader_;
  BufferSource* source_ = nullptr;
  FieldObserver* observer_ = nullptr;
  FIHandler* handler_ = nullptr;
  RecordHandler* records_ = nullptr;  // the same, if it is one
  std::unique_ptr<FIHandler> adopted_;
  const DictionaryInfo* descriptor_ = nullptr;
  bool isOpen_ = false;
  std::unique_ptr<Writing> writing_;
  const FIMessageTree* tree_ = nullptr;
  std::unique_ptr<const FIMessageTree> adoptedTree_;
  std::span<const unsigned char> original_;

  const RecordKind* kind_;     // of the last record
  std::string_view kindName_;  // as the condition gave it
  std::vector<std::string> kindsOfInterest_;
  std::uint64_t skipped_ = 0;
  // Of the record in hand:
  const Choice* undecided_ = nullptr;    // the choice that has no alternative for it
  std::vector<std::int32_t> decisions_;  // by Step::choice: those that were made before the walk

  // The fields that have been bad are looked at before they are converted: an exception takes far longer than that.
  bool hasMistrust_ = false;
  std::vector<bool> isMistrusted_;  // by step

  // These describe the record in hand. A step's true place is its offset plus `shift_`: less the bytes that earlier
  // short arrays lack, plus the occurrences that the walk has passed in the open ones.
  RecordBytes record_;
  std::int64_t shift_ = 0;
  // Fields are only to be read and told: nobody observes them, none has been bad, and their places are known.
  bool isPlain_ = false;
  bool isLost_ = false;    // a count is not known: nobody can tell where anything after its array is
  bool isShort_ = false;   // the record ended before a field
  bool hasValue_ = false;  // the field that was read last is a good one
  std::vector<Counter> counters_;
  std::vector<OpenArray> arrays_;         // the open ones, outermost first
  std::vector<OpenLoop> loops_;           // the same ones
  std::vector<std::int64_t> keptShifts_;  // at the start of the open items that share their bytes
};

}  // namespace oxr::rec
