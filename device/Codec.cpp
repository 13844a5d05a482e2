#include "pimAvMngApi/device/Codec.h"

#include <cctype>
#include <iterator>
#include <utility>

namespace {

struct CodecName {
    const char* text;   // written
    const char* lower;  // matched after lower-casing
};

// Indexed by the code.
const CodecName kCodecNames[] = {
    {"AM824", "am824"},
    {"L32", "l32"},
    {"L24", "l24"},
    {"L16", "l16"},
    {"SMPTE2022-6", "smpte2022-6"},
    {"AM824_TRANSPARENT", "am824_transparent"},
    {"raw", "raw"},
};

uint32_t codeOfName(std::string name) {
    for (char& c : name) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    for (size_t i = 0; i < std::size(kCodecNames); ++i) {
        if (name == kCodecNames[i].lower) {
            return static_cast<uint32_t>(i);
        }
    }
    return Codec::CODEC_NOT_SUPPORTED;
}

}  // namespace

std::string Codec::toString(uint32_t code) {
    return code < std::size(kCodecNames) ? kCodecNames[code].text : "Not-supported";
}

int Codec::setCodec(std::string name) {
    m_codec = codeOfName(std::move(name));
    return m_codec == CODEC_NOT_SUPPORTED ? -11 : 0;
}

void Codec::Serialize(Json::Value& out) const {
    out["codec"] = toString();
}

void Codec::Deserialize(Json::Value& in) {
    m_codec = codeOfName(in.get("codec", "AM824").asString());
}
