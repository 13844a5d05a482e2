#pragma once

#include <map>

#include "pimAvMngApi/adv/AdvSessionEntry.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// All advertised sessions, keyed and ordered by session id, one entry per id.
///
/// JSON form: an array of AdvSessionEntry objects in ascending id order. Serialize with
/// no entries leaves the target untouched (a null value stays null). Deserialize logs
/// the reload at level 5, empties the map and inserts every element under its id; of
/// two elements with the same id the first is kept.
class AdvSessionsDb : public IJsonSerializable {
public:
    AdvSessionsDb() = default;
    ~AdvSessionsDb() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    std::map<session_id_t, AdvSessionEntry> m_entries;  ///< The entries by session id, one per id.
};
