#pragma once

#include <string>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// ASCII case mapping; bytes outside A-Z / a-z are kept, so UTF-8 text passes unchanged and the
// result never depends on the process locale.
MBQ_EXPORT std::string toLower(const std::string& text);
MBQ_EXPORT std::string toUpper(const std::string& text);

// Decimal text to a signed 64-bit number. Leading and trailing white space (space, tab, CR, LF,
// VT, FF) is allowed, one '+' or '-' right before the digits is allowed, nothing else is.
// Returns 0 and sets `value` on success; returns -1 and leaves `value` unchanged for an empty,
// blank, non-numeric or out-of-range text (beyond -9223372036854775808..9223372036854775807).
MBQ_EXPORT int strToLonglong(const std::string& text, long long& value);
// The same, returning the number, or `fallback` when the text does not convert.
// `fallback` is taken by const reference on purpose: by value, a call with a plain
// `long long` variable would be ambiguous between the two overloads; this way a modifiable
// variable selects the overload above, and a literal or const value selects this one.
MBQ_EXPORT long long strToLonglong(const std::string& text, const long long& fallback = 0);

MBQ_EXPORT std::string longlongToStr(long long value);

// Shortest decimal text that reads back (strtod) to exactly the same double, plain or with an
// exponent, whichever is shorter: 0.1 -> "0.1", 100 -> "100", 12.5 -> "12.5", 1e300 ->
// "1e+300", 1e-05 -> "1e-05", -0.0 -> "-0". Always "." as the decimal point whatever the
// locale; "inf", "-inf" and "nan" for the special values.
MBQ_EXPORT std::string doubleToStr(double value);

}  // namespace MBQ
