#pragma once

// Number reading of the SDP parser: one conversion for every width and base, and the
// reading rules the parser builds on it.

#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>

#include "sdp/SdpText.h"

namespace pimav::detail {

enum class Conversion { Ok, Empty, Invalid, OutOfRange };

enum class NumberBase : unsigned {
    Prefixed = 0,  // as strtoul with base 0: "0x" hexadecimal, leading "0" octal, else decimal
    Decimal = 10,
};

// strtoul / strtoull on `text` for the unsigned type `Unsigned` (its width sets the range:
// the device's unsigned long is 32 bits wide): leading white space, an optional sign,
// the base prefix, then digits up to the first foreign character. A negative number
// wraps as strtoul does. `out` is 0 unless the result is Ok. An empty text is Empty; no
// digit (white space only, say) is Invalid; a value beyond the type is OutOfRange.
template <typename Unsigned>
Conversion toUnsigned(std::string_view text, Unsigned& out, NumberBase numberBase = NumberBase::Prefixed) {
    static_assert(std::is_unsigned_v<Unsigned>, "an unsigned type");
    out = 0;
    const char* p = text.data();
    const char* const end = p + text.size();
    if (p == end) {
        return Conversion::Empty;
    }
    while (p != end && isSpace(*p)) {
        ++p;
    }
    bool negative = false;
    if (p != end && (*p == '+' || *p == '-')) {
        negative = (*p == '-');
        ++p;
    }
    unsigned base = 10;
    if (numberBase == NumberBase::Prefixed && p != end && *p == '0') {
        if (end - p >= 3 && (p[1] == 'x' || p[1] == 'X') && std::isxdigit(static_cast<unsigned char>(p[2]))) {
            base = 16;
            p += 2;
        } else {
            base = 8;
        }
    }
    constexpr Unsigned kMax = std::numeric_limits<Unsigned>::max();
    // value * base + digit exceeds kMax exactly when value passes these (one division
    // per number, not one per digit).
    const Unsigned cutoff = kMax / base;
    const Unsigned cutlim = kMax % base;
    Unsigned value = 0;
    bool any = false;
    bool overflow = false;
    for (; p != end; ++p) {
        const unsigned char c = static_cast<unsigned char>(*p);
        unsigned digit;
        if (c >= '0' && c <= '9') {
            digit = c - '0';
        } else if (c >= 'a' && c <= 'z') {
            digit = c - 'a' + 10;
        } else if (c >= 'A' && c <= 'Z') {
            digit = c - 'A' + 10;
        } else {
            break;
        }
        if (digit >= base) {
            break;
        }
        any = true;
        if (value > cutoff || (value == cutoff && digit > cutlim)) {
            overflow = true;
        } else {
            value = static_cast<Unsigned>(value * base + digit);
        }
    }
    if (!any) {
        return Conversion::Invalid;
    }
    if (overflow) {
        return Conversion::OutOfRange;
    }
    out = negative ? static_cast<Unsigned>(Unsigned{0} - value) : value;
    return Conversion::Ok;
}

// The lenient reading of a number field: toUnsigned with base prefixes; an empty,
// non-numeric or out-of-range text gives 0 and a level-2 line naming the type
// ("integer" for 32 bits, "long long" for 64).
template <typename Unsigned>
Unsigned lenientUnsigned(std::string_view text);
extern template unsigned int lenientUnsigned<unsigned int>(std::string_view text);
extern template unsigned long long lenientUnsigned<unsigned long long>(std::string_view text);

// The reading of a formatted stream extraction into an unsigned 64-bit number: decimal
// only, white space skipped, a sign accepted (a minus wraps), no digit gives 0, a value
// beyond the type gives the largest value. Nothing is logged.
unsigned long long extractUnsigned64(std::string_view text);

// The standard strict conversions (std::stoi / std::stof): they throw on a text that
// holds no number.
int strictInt(std::string_view text);
float strictFloat(std::string_view text);

// A float converted to int the way the device's Arm core does it: truncation toward
// zero, saturating at the limits, NaN giving 0.
int saturatingInt(float value);

}  // namespace pimav::detail
