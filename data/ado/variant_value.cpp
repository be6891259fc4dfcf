#include "data/ado/variant_value.h"

#include "runtime/error.h"

namespace rdv::ado {
namespace {

DecimalNumber ToDecimalNumber(const DECIMAL& decimal) {
  DecimalNumber number;
  number.negative = (decimal.sign & DECIMAL_NEG) != 0;
  number.scale = decimal.scale;
  number.magnitude = {0, static_cast<uint32_t>(decimal.Hi32), static_cast<uint32_t>(decimal.Mid32),
                      static_cast<uint32_t>(decimal.Lo32)};
  return number;
}

Binary ToBytes(SAFEARRAY* array) {
  Binary bytes;
  LONG first = 0;
  LONG last = -1;
  void* data = nullptr;
  if (SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetLBound(array, 1, &first)) ||
      FAILED(SafeArrayGetUBound(array, 1, &last)) || FAILED(SafeArrayAccessData(array, &data))) {
    Raise(LanguageError::TypeMismatch);
  }
  const auto* begin = static_cast<const uint8_t*>(data);
  bytes.assign(begin, begin + (last - first + 1));
  SafeArrayUnaccessData(array);
  return bytes;
}

}  // namespace

Value ToValue(const VARIANT& variant) {
  switch (variant.vt) {
    case VT_EMPTY:
    case VT_NULL:
      return Null{};
    case VT_BOOL:
      return variant.boolVal != VARIANT_FALSE;
    case VT_UI1:
      return uint8_t{variant.bVal};
    case VT_I2:
      return int16_t{variant.iVal};
    case VT_I4:
      return static_cast<int32_t>(variant.lVal);
    case VT_CY:
      return Currency{variant.cyVal.int64};
    case VT_R4:
      return variant.fltVal;
    case VT_R8:
      return variant.dblVal;
    case VT_DATE:
      return DateTime{variant.date};
    case VT_DECIMAL:
      return ToDecimalNumber(variant.decVal);
    case VT_BSTR:
      return variant.bstrVal == nullptr ? Text()
                                        : Text(reinterpret_cast<const char16_t*>(variant.bstrVal),
                                               SysStringLen(variant.bstrVal));
    case VT_ARRAY | VT_UI1:
      return ToBytes(variant.parray);
    default:
      Raise(LanguageError::TypeMismatch);
  }
}

}  // namespace rdv::ado
