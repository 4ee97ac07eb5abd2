#pragma once

#include <optional>
#include <string>

#include "records/fields/decimaltext.hpp"
#include "records/fields/physicalform.hpp"
#include "records/fields/textwriter.hpp"
#include "records/plan/step.hpp"

namespace oxr::rec {

// Turns a value into the bytes of its field: the way back of FieldConverter, whose values it takes.
//
// A number may be DECIMAL (with an exponent too), INTEGER, FLOAT, or a STRING of one; a text is STRING. Whatever does
// not fit is refused before a byte is written: a number with more digits or places than the field has, a sign that it
// has not, text that is too long, a character that the code page lacks. Nothing is cut or rounded, but for floats.
//
// Serves one thread.
class FieldWriter {
 public:
  // Throws KelRecoverableException if the code page is not known.
  explicit FieldWriter(const PhysicalForm& form);

  // `bytes` has step.size bytes. Throws FieldRefused, whose text is for people, or KelRecoverableException.
  void write(const Step& step, const PWFData& value, unsigned char* bytes);
  // Writes what stands for a null in this form; false if nothing does.
  bool writeNull(const Step& step, unsigned char* bytes);
  // Fills a field with the blanks of its kind of text.
  void fillWithBlanks(Kind kind, unsigned char* bytes, std::uint32_t size) { textOf(kind).fillWithBlanks(bytes, size); }

 private:
  // A number as canonical text, which a terminator follows, and its parts.
  struct Number {
    const unsigned short* text = nullptr;
    DecimalText parts;
  };
  Number numberOf(const PWFData& value);
  Number fitting(const Step& step, const PWFData& value, std::size_t digits);
  void external(const Step& step, const PWFData& value, unsigned char* bytes);
  void packed(const Step& step, const PWFData& value, unsigned char* bytes);
  void unsignedPacked(const Step& step, const PWFData& value, unsigned char* bytes);
  void binary(const Step& step, const PWFData& value, unsigned char* bytes);
  void wideBinary(const Step& step, std::uint64_t upper, std::uint64_t lower, unsigned char* bytes);
  void floating(const Step& step, const PWFData& value, unsigned char* bytes);
  void edited(const Step& step, const PWFData& value, unsigned char* bytes);
  void withIncludedSign(const Step& step, const PWFData& value, unsigned char* bytes);
  void date(const Step& step, const PWFData& value, unsigned char* bytes);
  void plain(const Step& step, const PWFData& value, unsigned char* bytes);
  double doubleOf(const Step& step, const PWFData& value);
  FieldTextWriter& textOf(Kind kind);

  const PhysicalForm form_;
  DataCnv cnv_;
  FieldTextWriter text_;
  std::optional<DataCnv> nationalCnv_;  // made on first use, as the two below
  std::optional<FieldTextWriter> national_;
  std::optional<FieldTextWriter> doubleByte_;
  KelWstring datePattern_;
  KelWstring isoPattern_;
  std::basic_string<unsigned short> scratch_;  // text of a number that came as something else
};

}  // namespace oxr::rec
