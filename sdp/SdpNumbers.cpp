#include "sdp/SdpNumbers.h"

#include <string>

#include "sdp/SdpLog.h"

namespace pimav::detail {

namespace {

// The log texts of a failed lenient conversion: the type's name and the empty-text line.
struct TypeWords {
    const char* name;
    const char* empty;
};

template <typename Unsigned>
constexpr TypeWords typeWords() {
    static_assert(sizeof(Unsigned) == 4 || sizeof(Unsigned) == 8, "32 or 64 bits");
    if constexpr (sizeof(Unsigned) == 8) {
        return {"long long", "trying to convert to long long with an empty string. That is bad."};
    } else {
        return {"integer", "trying to convert to integer a empty string. That is bad."};
    }
}

}  // namespace

template <typename Unsigned>
Unsigned lenientUnsigned(std::string_view text) {
    constexpr TypeWords kWords = typeWords<Unsigned>();
    Unsigned value = 0;
    switch (toUnsigned(text, value)) {
        case Conversion::Ok:
            return value;
        case Conversion::Empty:
            SDP_LOG(2, "%s", kWords.empty);
            return 0;
        case Conversion::Invalid:
            SDP_LOG(2, "trying to convert to %s invalid value: %.*s", kWords.name, SDP_VIEW(text));
            return 0;
        case Conversion::OutOfRange:
            SDP_LOG(2, "trying to convert to %s out of range: %.*s", kWords.name, SDP_VIEW(text));
            return 0;
    }
    return 0;
}

template unsigned int lenientUnsigned<unsigned int>(std::string_view text);
template unsigned long long lenientUnsigned<unsigned long long>(std::string_view text);

unsigned long long extractUnsigned64(std::string_view text) {
    unsigned long long value = 0;
    switch (toUnsigned(text, value, NumberBase::Decimal)) {
        case Conversion::Ok:
            return value;
        case Conversion::OutOfRange:
            return std::numeric_limits<unsigned long long>::max();
        case Conversion::Empty:
        case Conversion::Invalid:
            return 0;
    }
    return 0;
}

int strictInt(std::string_view text) {
    return std::stoi(std::string(text));
}

float strictFloat(std::string_view text) {
    return std::stof(std::string(text));
}

int saturatingInt(float value) {
    if (!(value == value)) {
        return 0;
    }
    if (value >= 2147483648.0f) {
        return std::numeric_limits<int>::max();
    }
    if (value <= -2147483648.0f) {
        return std::numeric_limits<int>::min();
    }
    return static_cast<int>(value);
}

}  // namespace pimav::detail
