#include "pimAvMngApi/adv/AdvSessionsDb.h"

#include "pimAvMngApi/platform/Logger.h"

void AdvSessionsDb::Serialize(Json::Value& out) const {
    Json::ArrayIndex index = 0;
    for (const auto& item : m_entries) {
        item.second.Serialize(out[index]);
        ++index;
    }
}

void AdvSessionsDb::Deserialize(Json::Value& in) {
    Logger::log(5, "Cleaning advertisements database and loading it from the received json");
    m_entries.clear();
    const Json::ArrayIndex count = in.size();
    for (Json::ArrayIndex i = 0; i < count; ++i) {
        AdvSessionEntry entry;
        entry.Deserialize(in[i]);
        const session_id_t id = entry.getSessionId();
        // emplace keeps the entry already stored under the same id.
        m_entries.emplace(id, std::move(entry));
    }
}
