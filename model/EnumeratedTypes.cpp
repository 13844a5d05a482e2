// The enumerated-word types: each writes the word of its code and reads a word back by
// comparing it exactly against its word table.

#include <optional>
#include <string_view>

#include "pimAvMngApi/model/DaifType.h"
#include "pimAvMngApi/model/RedundantType.h"
#include "pimAvMngApi/model/SessionType.h"
#include "pimAvMngApi/model/State.h"
#include "pimAvMngApi/model/StreamClass.h"
#include "pimAvMngApi/model/StreamType.h"
#include "pimAvMngApi/model/TributaryType.h"
#include "platform/WordTable.h"

namespace {

using pimav::detail::WordRow;
using pimav::detail::WordUse;

constexpr WordRow<int32_t> kStateWords[] = {{State::DISABLED, "Disabled"},
                                            {State::ENABLED, "Enabled"},
                                            {State::PAUSED, "Paused"}};
// "ancillary" is written but not read back.
constexpr WordRow<int32_t> kStreamTypeWords[] = {{StreamType::AUDIO, "audio"},
                                                 {StreamType::VIDEO, "video"},
                                                 {StreamType::ANCILLARY, "ancillary", WordUse::WrittenOnly}};
constexpr WordRow<int32_t> kStreamClassWords[] = {{StreamClass::RECEIVER, "receiver"},
                                                  {StreamClass::SENDER, "sender"}};
constexpr WordRow<int32_t> kSessionTypeWords[] = {{SessionType::UNKNOWN, "unknown"},
                                                  {SessionType::SOURCE, "source"},
                                                  {SessionType::DESTINATION, "destination"}};
constexpr WordRow<int32_t> kRedundantTypeWords[] = {{RedundantType::NONE, "none"},
                                                    {RedundantType::PRIMARY, "primary"},
                                                    {RedundantType::SECONDARY, "secondary"}};
constexpr WordRow<int32_t> kTributaryTypeWords[] = {{TributaryType::NONE, "none"},
                                                    {TributaryType::MULTI_2SI, "MULTI-2SI"},
                                                    {TributaryType::MULTI_SD, "MULTI-SD"}};

// The reading rule of the types whose fromString reports: 0 with `code` set, or -8 with
// `code` kept when no row reads the word.
template <size_t N>
int readWord(const WordRow<int32_t> (&rows)[N], const std::string& word, int32_t& code) {
    const std::optional<int32_t> found = pimav::detail::codeOf(rows, word);
    if (!found) {
        return -8;
    }
    code = *found;
    return 0;
}

}  // namespace

PIMAV_WORD_TYPE_MEMBERS(State, m_value, kStateWords, "Undefined", DISABLED, "state", "")
PIMAV_WORD_TYPE_MEMBERS(StreamType, m_value, kStreamTypeWords, "undefined", m_value, "type", "")
PIMAV_WORD_TYPE_MEMBERS(StreamClass, m_value, kStreamClassWords, "undefined", m_value, "class", "")
PIMAV_WORD_TYPE_MEMBERS(SessionType, m_value, kSessionTypeWords, "unknown", UNKNOWN, "type", "")

// ---- RedundantType ----

std::string RedundantType::toString() const {
    return std::string(pimav::detail::wordOf(kRedundantTypeWords, m_value, "none"));
}

int RedundantType::fromString(const std::string& word) {
    return readWord(kRedundantTypeWords, word, m_value);
}

void RedundantType::Serialize(Json::Value& out) const {
    out["redundant-type"] = Json::Value(toString());
}

void RedundantType::Deserialize(Json::Value& in) {
    fromString(in.get("redundant-type", "none").asString());
}

// ---- TributaryType ----

std::string TributaryType::toString() const {
    return std::string(pimav::detail::wordOf(kTributaryTypeWords, m_type, "none"));
}

int TributaryType::fromString(const std::string& word) {
    return readWord(kTributaryTypeWords, word, m_type);
}

void TributaryType::Serialize(Json::Value& out) const {
    Json::Value& obj = out["tributary"];
    obj["type"] = Json::Value(toString());
    obj["index"] = Json::Value(m_index);
}

void TributaryType::Deserialize(Json::Value& in) {
    Json::Value& obj = in["tributary"];
    fromString(obj.get("type", "none").asString());
    m_index = obj.get("index", -1).asInt();
}

// ---- DaifType ----

void DaifType::Serialize(Json::Value& out) const {
    out["type"] = Json::Value(m_type);
    out["string"] = Json::Value(m_string);
}

void DaifType::Deserialize(Json::Value& in) {
    m_type = in.get("type", kDefaultType).asInt();
    m_string = in.get("string", "auto").asString();
}
