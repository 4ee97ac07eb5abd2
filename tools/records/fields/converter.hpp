#pragma once

#include <stdexcept>

#include "dataconv.hpp"
#include "records/fields/physicalform.hpp"
#include "records/plan/step.hpp"

namespace oxr::rec {

// A field whose bytes convert, but to nothing that its picture allows.
class FieldRefused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Turns the bytes of a field into a value.
//
//   text, edited   STRING; of a single-byte code page without the blanks at its end, which saves converting them
//   external, packed  DECIMAL: optional "-", digits (leading zeros too), optional "." and digits
//   binary         INTEGER; DECIMAL if it has decimal places or passes 64 bits signed
//
// Serves one thread.
class FieldConverter {
 public:
  // Throws KelRecoverableException if the code page is not known.
  explicit FieldConverter(const PhysicalForm& form);

  // `bytes` has step.size bytes. Throws KelRecoverableException or FieldRefused for a bad field.
  PWFData convert(const Step& step, const unsigned char* bytes);
  // A null of the type that convert() gives.
  static PWFData null(const Step& step);

 private:
  PWFData text(const unsigned char* bytes, std::uint32_t size);
  PWFData external(const Step& step, const unsigned char* bytes);
  PWFData packed(const Step& step, const unsigned char* bytes);
  PWFData binary(const Step& step, const unsigned char* bytes);
  PWFData scaled(std::uint64_t magnitude, bool isNegative, int scale);

  const bool hasLetterSigns_;
  DataCnv cnv_;
  // The byte of a blank where each byte is a character; 0, which no text ends in for padding, elsewhere.
  unsigned char blank_ = 0;
};

}  // namespace oxr::rec
