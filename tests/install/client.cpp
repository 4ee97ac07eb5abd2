// Reads an amount from a packed decimal field: five digits, two of them after the point.
#include <dataconv.hpp>
#include <iostream>
#include <kelwstringconvertor.hpp>

int main() {
  DataCnv converter(/*ccsid=*/37, eEndianBig, eEndianBig, eFloatHexadecimal, /*centuryWindow=*/53,
                    /*timeZoneName=*/nullptr, /*dateTimeFlag=*/false, /*dateTimeText=*/nullptr, /*firstWeekOfYear=*/0,
                    /*lenient=*/true, /*positivePackedSign=*/0xC, /*strictNumericChecking=*/false,
                    eMessageStandardDefault, /*owner=*/nullptr);
  const unsigned char field[] = {0x12, 0x34, 0x5D};
  const PWFData amount = converter.PckdDecToDec(field, sizeof field, /*virtualDecimalPoint=*/2, eSignTrailingIncluded);
  const oxr::UnitView text(amount.getDecimalValue(), static_cast<std::size_t>(amount.getDecimalLength()));
  std::cout << oxr::toUtf8(text) << '\n';  // -123.45
}
