#include "pimAvMngApi/device/Codec.h"

#include <string_view>

#include "platform/WordTable.h"

namespace {

// Names are read in any case.
constexpr pimav::detail::WordRow<uint32_t> kCodecNames[] = {
    {Codec::CODEC_AM824, "AM824"}, {Codec::CODEC_L32, "L32"}, {Codec::CODEC_L24, "L24"}, {Codec::CODEC_L16, "L16"},
    {Codec::CODEC_SMPTE2022_6, "SMPTE2022-6"}, {Codec::CODEC_AM824_TRANSPARENT, "AM824_TRANSPARENT"},
    {Codec::CODEC_RAW, "raw"},
};

uint32_t codeOfName(std::string_view name) {
    return pimav::detail::codeOfAnyCase(kCodecNames, name).value_or(Codec::CODEC_NOT_SUPPORTED);
}

}  // namespace

std::string Codec::toString(uint32_t code) {
    return std::string(pimav::detail::wordOf(kCodecNames, code, "Not-supported"));
}

int Codec::setCodec(std::string name) {
    m_codec = codeOfName(name);
    return m_codec == CODEC_NOT_SUPPORTED ? -11 : 0;
}

void Codec::Serialize(Json::Value& out) const {
    out["codec"] = toString();
}

void Codec::Deserialize(Json::Value& in) {
    m_codec = codeOfName(in.get("codec", "AM824").asString());
}
