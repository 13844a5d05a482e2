#pragma once

// Shared pieces of the SDP tests: a board switch that restores the previous board on scope
// exit, and the JSON view of a session.

#include <json/json.h>

#include <sstream>
#include <string>
#include <vector>

#include "pimAvMngApi/device/BoardModel.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"
#include "pimAvMngApi/sdp/SdpSession.h"
#include "support/TestData.h"

class BoardScope {
public:
    BoardScope(BoardModelType model, BitstreamType::module_t module)
        : m_saved(SystemDefaultCfg::getInstance()->getBoardModel()) {
        SystemDefaultCfg::getInstance()->setBoardModel(BoardModel(model, module));
    }
    // "MODEL MODULE" as the case files write it.
    explicit BoardScope(const std::string& words)
        : m_saved(SystemDefaultCfg::getInstance()->getBoardModel()) {
        std::istringstream in(words);
        std::string model, module;
        in >> model >> module;
        BoardModelType type = MAPLE;
        boardModelTypeFromString(model, type);
        SystemDefaultCfg::getInstance()->setBoardModel(BoardModel(type, BitstreamType::fromString(module)));
    }
    ~BoardScope() { SystemDefaultCfg::getInstance()->setBoardModel(m_saved); }
    BoardScope(const BoardScope&) = delete;
    BoardScope& operator=(const BoardScope&) = delete;

private:
    BoardModel m_saved;
};

// A session's JSON form with, in each media, the members that form leaves out: the packing
// mode and sender type, and with `parsed` also the group type and the channel order.
inline Json::Value sessionView(const SdpSession& session, bool parsed) {
    Json::Value view;
    session.Serialize(view);
    for (Json::ArrayIndex i = 0; i < session.m_media.size(); ++i) {
        const SdpMedia& media = session.m_media[i];
        view["media"][i]["packing-mode"] = media.m_packing_mode;
        view["media"][i]["sender-type"] = media.m_sender_type;
        if (parsed) {
            view["media"][i]["group-type"] = static_cast<int>(media.m_group_type);
            Json::Value& order = view["media"][i]["channel-order"] = Json::Value(Json::arrayValue);
            for (const std::string& item : media.m_channel_order) {
                order.append(item);
            }
        }
    }
    return view;
}
