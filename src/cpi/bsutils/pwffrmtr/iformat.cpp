// The members that tell the pattern of an ISO 8601 text, and of a schema type.

#include "core/isoshape.hpp"
#include "pwffrmtr.hpp"
#include "pwffrmtr/sourcepath.hpp"
#include "support/support.hpp"

using namespace oxr;

KelWstring PWFDateTimeFormatter::IdentifyIFormatPattern(const KelWstring& text) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::IdentifyIFormatPattern", kFormatterPath);
  core::IsoShape shape;
  if (!core::isoShapeOf(text.view(), shape)) raise<KelConversionException>(trace.site(), failures::kInvalidIFormat);
  core::IsoPattern pattern;
  core::appendIsoPattern(shape, pattern);
  return KelWstring(pattern.view());
}

int PWFDateTimeFormatter::IdentifyIDatePattern(const KelWstring& text) {
  return core::isoDateIndex(text.view());
}

int PWFDateTimeFormatter::IdentifyITimePattern(const KelWstring& text) {
  return core::isoTimeIndex(text.view());
}

void PWFDateTimeFormatter::EstablishIFormat(const unsigned short* typeName, KelWstring& pattern) {
  core::IsoPattern found;
  found.append(typeName != nullptr ? core::isoOutputPattern(typeName) : core::kIsoDateTimePattern);
  pattern = KelWstring(found.view());
}
