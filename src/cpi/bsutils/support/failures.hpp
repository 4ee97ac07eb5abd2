#pragma once

namespace oxr {

// A class of failure: its message number (severity in the top bits, the catalogue number in the low 16), the name that
// stands in the trace, and the text that its exceptions carry as first insert, where they carry one.
struct Failure {
  int number;
  const char* identifier;
  const char* text;
};

constexpr int errorNumber(unsigned message) {
  return static_cast<int>(0xC0000000u | message);
}
constexpr int warningNumber(unsigned message) {
  return static_cast<int>(0x80000000u | message);
}

// Every message of the library. The numbers and texts go out of the process: they never change.
// clang-format off
namespace failures {
// The recoverable failures have no name of their own: the trace shows the catalogue's.
inline constexpr Failure kDecimalFormatter     {errorNumber(2112), "OXR2112", "Error creating Decimal NumberFormat single instance."};
inline constexpr Failure kConverterCreation    {errorNumber(2130), "OXR2130", "Error creating convertor"};
inline constexpr Failure kConverterSetup       {errorNumber(2130), "OXR2130", "Error initializing converter"};
inline constexpr Failure kInvalidCodePage      {errorNumber(2132), "OXR2132", "Invalid codepage (or missing table)"};
inline constexpr Failure kAssertion            {errorNumber(5501), "", "CPAssertion failed"};
inline constexpr Failure kInternalError        {errorNumber(5502), "CP_INTERNAL_ERROR", "CPI Internal Error"};
inline constexpr Failure kTextBufferTooShort   {errorNumber(5503), "CP_TXTBUF_INPUT_DATA_TOO_SHORT", "CPI Text Buffer Input Data Too Short"};
inline constexpr Failure kTerminatorNotFound   {errorNumber(5504), "CP_TXTBUF_NULL_TERMINATOR_NOT_FOUND", "CPI Text Buffer Null Terminator Not Found"};
inline constexpr Failure kInvalidData          {errorNumber(5505), "CP_CONV_INPUT_DATA_INVALID", "CPI Converter Input Data Invalid"};
inline constexpr Failure kOutOfBounds          {errorNumber(5506), "CP_CONV_INPUT_DATA_OUT_OF_BOUNDS", "CPI Converter Input Data Out Of Bounds"};
inline constexpr Failure kTooLong              {errorNumber(5507), "CP_CONV_INPUT_DATA_TOO_LONG", "CPI InputData Too Long"};
inline constexpr Failure kInvalidEpoch         {errorNumber(5516), "CP_DATETIME_INVALID_EPOCH", "CPI Datetime invalid Epoch"};
inline constexpr Failure kInvalidPadding       {errorNumber(5520), "CP_CONV_INVALID_PADDING", "CPI Converter Invalid Padding Character"};
inline constexpr Failure kInvalidPaddingSize   {errorNumber(5521), "CP_CONV_INVALID_PADDING_SIZE", "CPI Converter An attempt to add padding to fixed length field has failed"};
inline constexpr Failure kInvalidOperation     {errorNumber(5522), "CP_INTERNAL_PWFDATA_INVALID_OPERATION", "CPI Internal error from invalid operation on PWFData"};
inline constexpr Failure kInvalidLogicalString {errorNumber(5523), "CP_INVALID_LOGICAL_STRING", "Exception caught trying to convert a logical string to a PWFData object"};
inline constexpr Failure kDateTimeFromBinary   {errorNumber(5527), "CP_DATETIME_FROM_BINARY_ERROR", "CPI Datetime From Binary Error"};
inline constexpr Failure kDateTimeToBinary     {errorNumber(5528), "CP_DATETIME_TO_BINARY_ERROR", "CPI Datetime To Binary Error"};
inline constexpr Failure kInvalidTimeZone      {errorNumber(5529), "CP_DATETIME_INVALID_TIMEZONE_ERROR", "Invalid timezone"};
inline constexpr Failure kDateTimeFormat       {errorNumber(5539), "CP_DATETIME_FORMAT_ERROR", "CPI Unable to format datetime internally"};
inline constexpr Failure kDateTimeParse        {errorNumber(5540), "CP_DATETIME_PARSE_ERROR", "CPI Unable to parse datetime internally"};
inline constexpr Failure kInvalidIFormat       {errorNumber(5544), "CP_DATETIME_INVALID_FORMAT_ERROR", "CPI String invalid format for pattern 'I'."};
inline constexpr Failure kDurationCombination  {errorNumber(5546), "CP_DURATION_COMBINATION_ERROR", "CPI Years/months along with days/hours/minutes/seconds"};
inline constexpr Failure kDurationRange        {errorNumber(5547), "CP_DURATION_RANGE_ERROR", "CPI Field value > 32BIT_MAX"};
inline constexpr Failure kFineSeconds          {warningNumber(5548), "", "CPI Seconds precision finer than microseconds"};
inline constexpr Failure kDurationTooManyDays  {errorNumber(5549), "CP_DURATION_TOO_MANY_DAYS", "CPI Cannot store more than ~100 million days in PWFInterval"};
inline constexpr Failure kStrictZeroLength     {errorNumber(5550), "CP_NUMERIC_STRICT_ZERO_LENGTH", "Strict Numeric Checking: Numeric cannot be zero in length."};
inline constexpr Failure kStrictDecimalPoint   {errorNumber(5551), "CP_NUMERIC_STRICT_DECIMAL_POINT", "Strict Numeric Checking: Numeric can only have the specified decimal point."};
inline constexpr Failure kStrictIntegerDigit   {errorNumber(5552), "CP_NUMERIC_STRICT_INTEGER_DIGIT", "Strict Numeric Checking: Numeric must have an integer part."};
inline constexpr Failure kStrictNoPoint        {errorNumber(5553), "CP_NUMERIC_STRICT_NO_DECIMAL_POINT", "Strict Numeric Checking: Explicit Decimal Point numeric must have a decimal point."};
inline constexpr Failure kStrictEndsWithPoint  {errorNumber(5554), "CP_NUMERIC_STRICT_ENDS_DECIMAL_POINT", "Strict Numeric Checking: Only Explicit Decimal Point numerics may end with a decimal point."};
inline constexpr Failure kStrictNonExponential {errorNumber(5555), "CP_NUMERIC_STRICT_NON_EXPONENTIAL", "Strict Numeric Checking: A non-exponential numeric cannot be given in exponential format."};
inline constexpr Failure kStrictExponential    {errorNumber(5556), "CP_NUMERIC_STRICT_EXPONENTIAL", "Strict Numeric Checking: An exponential numeric must be given in exponential format."};
inline constexpr Failure kStrictPlaces         {errorNumber(5557), "CP_NUMERIC_STRICT_INCORRECT_DEC_PLACES", "Strict Numeric Checking: Incorrect number of decimal places given."};
inline constexpr Failure kStrictVirtualPoint   {errorNumber(5558), "CP_NUMERIC_STRICT_VDP_HAS_DECIMAL", "Strict Numeric Checking: Numeric with VDP should not have a decimal point."};
inline constexpr Failure kDateTimeRange        {errorNumber(5559), "CP_DATETIME_RANGE_ERROR", "CPI Unable to convert datetime. Datetime outside possible range"};
inline constexpr Failure kMillisecondRange     {errorNumber(5561), "CP_DATETIME_MILLISECONDRANGE_ERROR", "CPI Unable to convert to datetime. Milliseconds outside possible range"};
inline constexpr Failure kEmptyDateTimeFormat  {errorNumber(5563), "CP_DATETIME_EMPTY_FORMAT", "CPI DateTime Format string not set"};
}  // namespace failures
// clang-format on

}  // namespace oxr
