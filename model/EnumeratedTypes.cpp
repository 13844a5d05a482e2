// The enumerated-word types: each writes the word of its code and reads a word back
// by comparing it exactly against its table, top row first.

#include "pimAvMngApi/model/DaifType.h"
#include "pimAvMngApi/model/RedundantType.h"
#include "pimAvMngApi/model/SessionType.h"
#include "pimAvMngApi/model/State.h"
#include "pimAvMngApi/model/StreamClass.h"
#include "pimAvMngApi/model/StreamType.h"
#include "pimAvMngApi/model/TributaryType.h"

// ---- State ----

std::string State::toString() const {
    switch (m_value) {
        case DISABLED:
            return "Disabled";
        case ENABLED:
            return "Enabled";
        case PAUSED:
            return "Paused";
        default:
            return "Undefined";
    }
}

void State::fromString(const std::string& word) {
    if (word == "Enabled") {
        m_value = ENABLED;
    } else if (word == "Paused") {
        m_value = PAUSED;
    } else {
        m_value = DISABLED;
    }
}

void State::Serialize(Json::Value& out) const {
    out["state"] = Json::Value(toString());
}

void State::Deserialize(Json::Value& in) {
    fromString(in.get("state", "").asString());
}

// ---- StreamType ----

std::string StreamType::toString() const {
    switch (m_value) {
        case AUDIO:
            return "audio";
        case VIDEO:
            return "video";
        case ANCILLARY:
            return "ancillary";
        default:
            return "undefined";
    }
}

void StreamType::fromString(const std::string& word) {
    if (word == "audio") {
        m_value = AUDIO;
    } else if (word == "video") {
        m_value = VIDEO;
    }
}

void StreamType::Serialize(Json::Value& out) const {
    out["type"] = Json::Value(toString());
}

void StreamType::Deserialize(Json::Value& in) {
    fromString(in.get("type", "").asString());
}

// ---- StreamClass ----

std::string StreamClass::toString() const {
    switch (m_value) {
        case RECEIVER:
            return "receiver";
        case SENDER:
            return "sender";
        default:
            return "undefined";
    }
}

void StreamClass::fromString(const std::string& word) {
    if (word == "receiver") {
        m_value = RECEIVER;
    } else if (word == "sender") {
        m_value = SENDER;
    }
}

void StreamClass::Serialize(Json::Value& out) const {
    out["class"] = Json::Value(toString());
}

void StreamClass::Deserialize(Json::Value& in) {
    fromString(in.get("class", "").asString());
}

// ---- SessionType ----

std::string SessionType::toString() const {
    switch (m_value) {
        case SOURCE:
            return "source";
        case DESTINATION:
            return "destination";
        default:
            return "unknown";
    }
}

void SessionType::fromString(const std::string& word) {
    if (word == "source") {
        m_value = SOURCE;
    } else if (word == "destination") {
        m_value = DESTINATION;
    } else {
        m_value = UNKNOWN;
    }
}

void SessionType::Serialize(Json::Value& out) const {
    out["type"] = Json::Value(toString());
}

void SessionType::Deserialize(Json::Value& in) {
    fromString(in.get("type", "").asString());
}

// ---- RedundantType ----

std::string RedundantType::toString() const {
    switch (m_value) {
        case PRIMARY:
            return "primary";
        case SECONDARY:
            return "secondary";
        default:
            return "none";
    }
}

int RedundantType::fromString(const std::string& word) {
    if (word == "none") {
        m_value = NONE;
    } else if (word == "primary") {
        m_value = PRIMARY;
    } else if (word == "secondary") {
        m_value = SECONDARY;
    } else {
        return -8;
    }
    return 0;
}

void RedundantType::Serialize(Json::Value& out) const {
    out["redundant-type"] = Json::Value(toString());
}

void RedundantType::Deserialize(Json::Value& in) {
    fromString(in.get("redundant-type", "none").asString());
}

// ---- TributaryType ----

std::string TributaryType::toString() const {
    switch (m_type) {
        case MULTI_2SI:
            return "MULTI-2SI";
        case MULTI_SD:
            return "MULTI-SD";
        default:
            return "none";
    }
}

int TributaryType::fromString(const std::string& word) {
    if (word == "none") {
        m_type = NONE;
    } else if (word == "MULTI-2SI") {
        m_type = MULTI_2SI;
    } else if (word == "MULTI-SD") {
        m_type = MULTI_SD;
    } else {
        return -8;
    }
    return 0;
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
