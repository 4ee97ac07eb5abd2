// Making and reading logical values. A value is a type, a null flag, a string with room for 16 units inside, and 48
// bytes that hold any other value; only a BINARY can own a block. So making, copying and dropping go by the type, and
// an assignment does what can fail before a member changes: no block is ever owned twice.

#include "pwfdata.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "support/deliberateleak.hpp"
#include "support/support.hpp"

namespace {

using namespace oxr;

constexpr char kSourcePath[] = "src/cpi/bsutils/pwfdata";

class Trace : public ValueFunctionTrace {
 public:
  explicit Trace(const char* function) : ValueFunctionTrace(nullptr, function, kSourcePath) {}
};

// The entry of init() shows its arguments, the exit whether a null came of them.
class InitTrace : public ValueFunctionTrace {
 public:
  InitTrace(const void* data, int length, int type, int own)
      : ValueFunctionTrace(nullptr, "PWFData::init", kSourcePath,
                           [&](KelLog::FastItem& item) { item << data << length << type << own; }) {}
  void exit(bool nullFlag) {
    ValueFunctionTrace::exit([&](KelLog::FastItem& item) { item << nullFlag; });
  }
};

[[noreturn]] void raiseInvalid(const FailureSite& site, const char* text) {
  raise<KelConversionException>(site, failures::kInvalidOperation, text);
}

// The two tests of the getters. The type comes first: a null of the wrong type reports the type
// (PwfData.GettersTestTheTypeBeforeTheNull). The line that the trace shows is the getter's.
void requireType(const Trace& trace, bool accepted, ELogicalType type, const char* text, int line = __builtin_LINE()) {
  if (accepted) return;
  trace.fact("LogicalType", static_cast<int>(type));
  raiseInvalid(trace.site(line), text);
}
void requireValue(const Trace& trace, bool isNull, const char* text, int line = __builtin_LINE()) {
  if (isNull) raiseInvalid(trace.site(line), text);
}

constexpr char kNotDecimal[] = "Logical type not equal to decimal";
constexpr char kNotBoolean[] = "Logical type not equal to boolean";
constexpr char kNotBinary[] = "Logical type not equal to binary";
constexpr char kNotInteger[] = "Logical type not equal to integer";
constexpr char kNotString[] = "Logical type not equal to string";
constexpr char kNullBoolean[] = "Can't get value for null boolean value";
constexpr char kNullInteger[] = "Can't get value for null integer value";

// Stores a text of `bytes` bytes; -1 says that it is zero-terminated. It may start at any address, at an odd one too.
void assignText(KelWstring& target, const void* data, int bytes) {
  const auto* const text = static_cast<const unsigned char*>(data);
  const auto unitAt = [text](std::size_t index) {
    unsigned short unit;
    std::memcpy(&unit, text + index * sizeof unit, sizeof unit);
    return unit;
  };
  std::size_t count = bytes > 0 ? static_cast<std::size_t>(bytes) / 2 : 0;
  if (bytes == -1)
    while (unitAt(count) != 0)
      ++count;
  unsigned short* const units = target.resizeForOverwrite(static_cast<unsigned>(count));
  if (count != 0) std::memcpy(units, text, count * sizeof *units);
}

// Copies the bytes to a block of their own, which is released with array delete.
unsigned char* copyOf(const void* data, int length) {
  auto* const block = new unsigned char[static_cast<std::size_t>(length)];
  std::memcpy(block, data, static_cast<std::size_t>(length));
  return block;
}

}  // namespace

PWFData::PWFData(PWFInt32 value, ELogicalType type) {
  const Trace trace("PWFData::PWFData(PWFInt32, ELogicalType)");
  if (type != INTEGER && type != BOOLEAN) {
    trace.fact("LogicalType", static_cast<int>(type));
    raiseInvalid(trace.site(), "Logical type for this contructor must be either Boolean or Integer");
  }
  init(&value, type == INTEGER ? 4 : 0, type, COPY);
}

PWFData::PWFData(bool value) {
  const PWFInt32 widened = value;
  init(&widened, 0, BOOLEAN, COPY);
}

PWFData::PWFData(const PWFDateTime& value) {
  init(&value, 0, DATETIME, COPY);
}

PWFData::PWFData(const PWFInterval& value) {
  init(&value, 0, INTERVAL, COPY);
}

// Text that is there needs nothing of init() but its lines in the trace. The trace itself keeps more on the stack than
// all the rest.
PWFData::PWFData(const unsigned short* text, ELogicalType type) {
  if (text != nullptr && (type == STRING || type == DECIMAL)) {
    logicalType = type;
    assignText(stringValue, text, -1);
    traceInit(text, -1, type);
  } else {
    init(text, -1, type, COPY);
  }
}

// Bytes that are there need nothing of init() either.
PWFData::PWFData(void* data, int length, ELogicalType type, EOwnership own) {
  if (data != nullptr && type == BINARY && !debugTraceOn()) {
    logicalType = type;
    storeBinary(data, length, own);
  } else {
    init(data, length, type, own);
  }
}

PWFData::PWFData(const void* data, int length, ELogicalType type, EOwnership own) {
  const Trace trace("PWFData::PWFData(const void*, ...)");
  if (own == ADOPT) raiseInvalid(trace.site(), "Can't adopt given a const's pointer");
  init(data, length, type, own);
}

void PWFData::init(const void* data, int length, ELogicalType type, EOwnership own) {
  InitTrace trace(data, length, type, own);
  logicalType = type;
  nullFlag = data == nullptr;
  if (data == nullptr) {
    if (type == INTEGER) valueArea.integer.width = 8;
  } else if (type <= 0) {
    raise<KelParserException>(trace.site(), failures::kInternalError, "Invlaid logical type when passing in a value");
  } else {
    // The site is put together only here: as an argument of each call it was a third of the price of a value.
    if (!store(data, length, own)) raiseInvalid(trace.site(), "Invalid length for an integer");
    if (type != BINARY && own == ADOPT) std::free(const_cast<void*>(data));
  }
  trace.exit(nullFlag);
}

void PWFData::writeInit(const void* data, int length, ELogicalType type) const {
  InitTrace(data, length, type, COPY).exit(nullFlag);
}

// Stores by logicalType; a number that names no type stores nothing. Values are copied as bytes: `data` may point into
// a message, at any address. False for an integer of a length that none has.
bool PWFData::store(const void* data, int length, EOwnership own) {
  switch (logicalType) {
    case STRING:
    case DECIMAL:
      assignText(stringValue, data, length);
      break;
    case INTEGER:
      if (length != 4 && length != 8) return false;
      valueArea.integer.width = length;
      if (length == 4)
        std::memcpy(&valueArea.integer.value32, data, 4);
      else
        std::memcpy(&valueArea.integer.value64, data, 8);
      break;
    case FLOAT:
      std::memcpy(&valueArea.doubleValue, data, sizeof valueArea.doubleValue);
      break;
    case BOOLEAN:
      std::memcpy(&valueArea.booleanValue, data, sizeof valueArea.booleanValue);
      break;
    case INTERVAL:
      std::memcpy(&valueArea.interval, data, sizeof valueArea.interval);
      break;
    case DATETIME:
      std::memcpy(&valueArea.dateTime, data, sizeof valueArea.dateTime);
      break;
    case BINARY:
      storeBinary(data, length, own);
      break;
    default:
      break;
  }
  return true;
}

// A length of -1 stores nothing. An ownership that is none of the three stores the length, but no pointer.
void PWFData::storeBinary(const void* data, int length, EOwnership own) {
  if (length == -1) return;
  void* pointer = nullptr;
  if (own == COPY)
    pointer = copyOf(data, std::max(length, 0));
  else if (own == ADOPT || own == REFERENCE)
    pointer = const_cast<void*>(data);
  valueArea.binary = {own, length, pointer};
}

// An empty text and a scalar cost no more than their bytes here: only a BINARY that owns its block allocates.
PWFData::PWFData(const PWFData& other)
    : logicalType(other.logicalType),
      nullFlag(other.nullFlag),
      stringValue(other.stringValue),
      valueArea(other.copiedArea()) {
  traceMade("PWFData::PWFData(PWFData&)");
}

PWFData& PWFData::operator=(const PWFData& other) {
  const Trace trace("PWFData::OpAssign");
  if (this == &other) return *this;
  // What can fail comes first. Only one of these two can: a value that has a block has no text.
  const ValueArea area = other.copiedArea();
  stringValue = other.stringValue;
  // The old block is not released, on purpose: PwfData.AssignmentLeavesTheOldBlockValid.
  if (ownsBinary()) leakOnPurpose(valueArea.binary.pointer);
  logicalType = other.logicalType;
  nullFlag = other.nullFlag;
  valueArea = area;
  return *this;
}

bool PWFData::ownsBinary() const {
  return logicalType == BINARY && valueArea.binary.pointer != nullptr &&
         (valueArea.binary.ownership == COPY || valueArea.binary.ownership == ADOPT);
}

PWFData::ValueArea PWFData::copiedArea() const {
  ValueArea area = valueArea;
  if (ownsBinary())
    area.binary = {COPY, area.binary.length, copyOf(area.binary.pointer, std::max(area.binary.length, 0))};
  return area;
}

void PWFData::releaseBinary() {
  if (valueArea.binary.ownership == COPY) delete[] static_cast<unsigned char*>(valueArea.binary.pointer);
  if (valueArea.binary.ownership == ADOPT) std::free(valueArea.binary.pointer);
}

void PWFData::writeMade(const char* function) {
  if (ValueTrace::on()) KelLog::writeDebugExit(function, KelLog::writeDebugEntry(function));
}

int PWFData::getDataLength() const {
  if (nullFlag) return 0;
  switch (logicalType) {
    case STRING:
    case DECIMAL:
      return static_cast<int>(stringValue.length() * sizeof(unsigned short));
    case INTEGER:
      return valueArea.integer.width;
    case FLOAT:
      return sizeof valueArea.doubleValue;
    case BINARY:
      return valueArea.binary.length;
    case BOOLEAN:
      return sizeof valueArea.booleanValue;
    case INTERVAL:
      return sizeof valueArea.interval;
    case DATETIME:
      return sizeof valueArea.dateTime;
    default:
      return 0;
  }
}

const void* PWFData::getDataValue() const {
  if (nullFlag) return nullptr;
  switch (logicalType) {
    case STRING:
    case DECIMAL:
      return stringValue.characters();
    case INTEGER:
      if (valueArea.integer.width == 8) return &valueArea.integer.value64;
      return &valueArea.integer.value32;
    case BINARY:
      return valueArea.binary.pointer;
    case FLOAT:
    case BOOLEAN:
    case INTERVAL:
    case DATETIME:
      return &valueArea;
    default:
      return nullptr;
  }
}

void PWFData::checkText(ELogicalType type, const char* function, int line) const {
  const Trace trace(function);
  requireType(trace, logicalType == type, logicalType, type == DECIMAL ? kNotDecimal : kNotString, line);
}

PWFInterval PWFData::getIntervalValue() const {
  const Trace trace("PWFData::getIntervalValue");
  requireType(trace, logicalType == INTERVAL, logicalType, "Logical type not equal to interval");
  return valueArea.interval;
}

int PWFData::getBooleanValue() const {
  const Trace trace("PWFData::getBooleanValue");
  requireType(trace, logicalType == BOOLEAN, logicalType, kNotBoolean);
  requireValue(trace, nullFlag, kNullBoolean);
  return valueArea.booleanValue;
}

bool PWFData::getBoolValue() const {
  const Trace trace("PWFData::getBoolValue");
  requireType(trace, logicalType == BOOLEAN, logicalType, kNotBoolean);
  requireValue(trace, nullFlag, kNullBoolean);
  return valueArea.booleanValue != 0;
}

const void* PWFData::getBinaryValue(int& length) const {
  const Trace trace("PWFData::getBinaryValue");
  requireType(trace, logicalType == BINARY, logicalType, kNotBinary);
  length = valueArea.binary.length;
  return valueArea.binary.pointer;
}

const void* PWFData::getBinaryValue() const {
  int length = 0;
  return getBinaryValue(length);
}

double PWFData::getDoubleValue() const {
  const Trace trace("PWFData::getDoubleValue");
  requireType(trace, logicalType == FLOAT, logicalType, "Logical type not equal to float");
  requireValue(trace, nullFlag, "Can't get value for null double value");
  return valueArea.doubleValue;
}

void PWFData::checkInt64() const {
  const Trace trace("PWFData::getInt64Value");
  requireType(trace, logicalType == INTEGER, logicalType, kNotInteger);
  requireValue(trace, nullFlag, kNullInteger);
}

PWFInt32 PWFData::getInt32Value() const {
  const Trace trace("PWFData::getInt32Value");
  requireType(trace, logicalType == INTEGER, logicalType, kNotInteger);
  requireValue(trace, nullFlag, kNullInteger);
  if (valueArea.integer.width != 8) return valueArea.integer.value32;
  const PWFInt64 value = valueArea.integer.value64;
  if (value < std::numeric_limits<PWFInt32>::min() || value > std::numeric_limits<PWFInt32>::max())
    raiseBare<KelConversionException>(trace.site(), failures::kTooLong, "Overflow converting a PWFInt64 to PWFInt32",
                                      "integer", "4-byte integer", value);
  return static_cast<PWFInt32>(value);
}

int PWFData::getStringLength() const {
  const Trace trace("PWFData::getStringLength");
  requireType(trace, logicalType == STRING || logicalType == DECIMAL, logicalType, kNotString);
  return static_cast<int>(stringValue.length());
}

PWFDateTime PWFData::getDateTimeValue() const {
  const Trace trace("PWFData::getDateTimeValue");
  requireType(trace, logicalType == DATETIME, logicalType, "Logical type not equal to datetime");
  return valueArea.dateTime;
}
