#include "pimAvMngApi/adv/AdvertisementState.h"

std::string AdvertisementState::toString() const {
    switch (m_state) {
        case OK:
            return "OK";
        case STALE:
            return "Stale";
        default:
            return "Undefined";
    }
}

void AdvertisementState::fromString(const std::string& text) {
    m_state = (text == "Stale") ? STALE : OK;
}

void AdvertisementState::Serialize(Json::Value& out) const {
    out["status"] = toString();
}

void AdvertisementState::Deserialize(Json::Value& in) {
    fromString(in.get("status", "").asString());
}
