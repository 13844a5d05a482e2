#include "model/KeptKeys.h"

namespace pimav::detail {

void keepUnknownKeys(const Json::Value& in, std::initializer_list<const char*> known, Json::Value& store) {
    store = Json::Value(Json::nullValue);
    if (!in.isObject()) {
        return;
    }
    for (auto it = in.begin(); it != in.end(); ++it) {
        const std::string key = it.name();
        bool isKnown = false;
        for (const char* k : known) {
            if (key == k) {
                isKnown = true;
                break;
            }
        }
        if (!isKnown) {
            store[key] = *it;
        }
    }
}

void writeKeptKeys(const Json::Value& store, Json::Value& out) {
    if (!store.isObject()) {
        return;
    }
    for (auto it = store.begin(); it != store.end(); ++it) {
        out[it.name()] = *it;
    }
}

}  // namespace pimav::detail
