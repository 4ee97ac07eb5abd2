#include "records/framing/linecharacters.hpp"

#include <string>

#include "cpunicodeconverter.hpp"
#include "kelexception.hpp"
#include "kelwstring.hpp"
#include "records/framing/errors.hpp"

namespace oxr::rec {

namespace {

constexpr unsigned char kEbcdicBlank = 0x40;

unsigned char byteOf(const CPUnicodeConverter& page, int ccsid, unsigned short character) {
  char bytes[8];
  int size = sizeof bytes;
  UErrorCode status = U_ZERO_ERROR;
  page.fromUnicodeString(bytes, size, KelWstring(&character, 1), status);
  if (U_FAILURE(status) || size != 1)
    throw ToolError("CCSID " + std::to_string(ccsid) + " has no lines: its characters take several bytes");
  return static_cast<unsigned char>(bytes[0]);
}

void setCharacters(RecordForm& form, int ccsid) {
  constexpr unsigned short kNextLine = 0x85;
  const CPUnicodeConverter page(ccsid, eEndianBig);
  form.lineFeed = byteOf(page, ccsid, '\n');
  form.carriageReturn = byteOf(page, ccsid, '\r');
  form.blank = byteOf(page, ccsid, ' ');
  form.nextLine = form.blank == kEbcdicBlank ? byteOf(page, ccsid, kNextLine) : form.lineFeed;
}

}  // namespace

void setLineCharacters(RecordForm& form, int ccsid) {
  if (form.framing == Framing::lines || form.framing == Framing::automatic) return setCharacters(form, ccsid);
  // Only hints ask for them: a page without lines gets none, and what it cannot be used for is told elsewhere.
  try {
    setCharacters(form, ccsid);
  } catch (const ToolError&) {
  } catch (const KelException&) {
  }
}

}  // namespace oxr::rec
