#pragma once

#include <cstdint>
#include <string>

#include "pimAvMngApi/platform/IJsonSerializable.h"

/// The encoding of a stream.
///
/// | code | name                    | text                |
/// |------|-------------------------|---------------------|
/// | 0    | CODEC_AM824             | "AM824"             |
/// | 1    | CODEC_L32               | "L32"               |
/// | 2    | CODEC_L24               | "L24"               |
/// | 3    | CODEC_L16               | "L16"               |
/// | 4    | CODEC_SMPTE2022_6       | "SMPTE2022-6"       |
/// | 5    | CODEC_AM824_TRANSPARENT | "AM824_TRANSPARENT" |
/// | 6    | CODEC_RAW               | "raw"               |
/// | 7+   | CODEC_NOT_SUPPORTED     | "Not-supported"     |
///
/// Names are matched in any case. JSON form: {"codec": text}; reading takes "codec"
/// (default "AM824") and gives CODEC_NOT_SUPPORTED for a name outside the table.
class Codec : public IJsonSerializable {
public:
    /// The codes of the table above.
    enum codec_t : uint32_t {
        CODEC_AM824 = 0,
        CODEC_L32 = 1,
        CODEC_L24 = 2,
        CODEC_L16 = 3,
        CODEC_SMPTE2022_6 = 4,
        CODEC_AM824_TRANSPARENT = 5,
        CODEC_RAW = 6,
        CODEC_NOT_SUPPORTED = 7,
    };

    Codec() = default;
    /// A value holding `code`, kept as given.
    explicit Codec(uint32_t code) : m_codec(code) {}
    ~Codec() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Sets the code of a name (any case): 0, or -11 with CODEC_NOT_SUPPORTED when the
    /// name is not in the table.
    int setCodec(std::string name);
    /// The text of the code; "Not-supported" for 7 and any other value.
    std::string toString() const { return toString(m_codec); }
    /// The text of `code` by the table above.
    static std::string toString(uint32_t code);

    /// The code.
    uint32_t getCodec() const { return m_codec; }
    /// Sets the code; any value is kept as given.
    void setCodecValue(uint32_t code) { m_codec = code; }

    ///@{
    /// Values are equal when their codes are.
    bool operator==(const Codec& o) const { return m_codec == o.m_codec; }
    bool operator!=(const Codec& o) const { return m_codec != o.m_codec; }
    ///@}

    uint32_t m_codec = CODEC_AM824;  ///< The code ("codec").
};
