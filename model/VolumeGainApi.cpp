#include "pimAvMngApi/model/VolumeGainApi.h"

#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"

// A message meant for the user: logged at level 2 and kept for the reply.
#define GAIN_USER_MESSAGE(...)                               \
    do {                                                     \
        Logger::getInstance()->logMessage(2, __VA_ARGS__);   \
        ErrorAuxMsg::getInstance()->addMessage(__VA_ARGS__); \
    } while (0)

void VolumeGainApi::Serialize(Json::Value& out) const {
    if (m_session_id != 0) {
        out["session-id"] = Json::Value(static_cast<Json::UInt64>(m_session_id));
    }
    Json::Value::ArrayIndex i = 0;
    for (const ChannelChanges& change : m_changes) {
        Json::Value& element = out["channel-list"][i++];
        element["channel-gain"] = Json::Value(change.m_gain);
        element["mute"] = Json::Value(change.m_mute);
        element["position"] = Json::Value(change.m_position);
    }
}

void VolumeGainApi::Deserialize(Json::Value& in) {
    if (!m_no_session_id) {
        const Json::Value id = in.get("session-id", Json::Value());
        if (!id.empty()) {
            m_session_id = id.asUInt64();
        }
    }
    if (!in.isMember("channel-list") || !in["channel-list"].isArray()) {
        return;
    }
    Json::Value& list = in["channel-list"];
    for (Json::Value::ArrayIndex i = 0; i < list.size(); ++i) {
        Json::Value& element = list[i];
        ChannelChanges change;
        change.m_gain = element.get("channel-gain", 0.0).asDouble();
        change.m_mute = element.get("mute", false).asBool();
        change.m_position = element.get("position", 255).asUInt();
        m_changes.push_back(change);
    }
    Logger::getInstance()->logMessage(4, "GainApi ----- Message Deserialized");
    ErrorAuxMsg::getInstance()->addMessage("GainApi ----- Message Deserialized");
}

int VolumeGainApi::Validate(Json::Value& request, unsigned int command) {
    const bool isObject = request.isObject();
    if ((command == kSetTalkerGain || command == kGetSourceGain) &&
        !(isObject && request.isMember("session-id"))) {
        GAIN_USER_MESSAGE("Must specify the session-ID for this command");
        return -13;
    }
    if (command != kSetTalkerGain && command != kSetListenerGain && command != kGetListenerGain) {
        return 0;
    }
    static const char kListKey[] = "channel-list";
    const Json::Value* list = isObject ? request.find(kListKey, kListKey + sizeof(kListKey) - 1) : nullptr;
    if (list == nullptr || !list->isArray()) {
        GAIN_USER_MESSAGE("The 'channel-list' node is either missing or isn't an array.");
        return -13;
    }
    if (command == kGetListenerGain) {
        if (list->empty()) {
            GAIN_USER_MESSAGE("The 'channel-list' array is empty.");
            return -13;
        }
        return 0;
    }
    for (Json::Value::ArrayIndex i = 0; i < list->size(); ++i) {
        const Json::Value& element = (*list)[i];
        const int index = static_cast<int>(i);
        if (!element.isObject() || !element.isMember("channel-gain") || !element.isMember("position") ||
            !element.isMember("mute")) {
            GAIN_USER_MESSAGE(
                "Every channel specified must contain all 3 fields [channel-gain, position, mute]");
            GAIN_USER_MESSAGE("Channel [%d] specified is missing a field.", index);
            return -13;
        }
        if (!element["channel-gain"].isDouble()) {
            GAIN_USER_MESSAGE("'channel-gain' field at node '%d' isn't a floating point number.", index);
            return -13;
        }
        if (!element["position"].isInt()) {
            GAIN_USER_MESSAGE("'position' field at node '%d' isn't an integer number.", index);
            return -13;
        }
        if (!element["mute"].isBool()) {
            GAIN_USER_MESSAGE("'mute' field at node '%d' isn't a boolean value.", index);
            return -13;
        }
    }
    return 0;
}
