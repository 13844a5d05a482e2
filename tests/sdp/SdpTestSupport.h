#pragma once

// Shared pieces of the SDP tests: a board switch that restores the previous board on scope
// exit, the case files of tests/data/sdp-parse, and the JSON view of a session.

#include <json/json.h>

#include <map>
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
    explicit BoardScope(const std::string& words) : m_saved(SystemDefaultCfg::getInstance()->getBoardModel()) {
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

// A case of a file of tests/data/sdp-parse: "=== title", then "key rest" lines; "text" and
// "dante" open a block of lines (escapes resolved) up to a line ".", kept under their key
// with the rest of their line under "<key>-mode". Other values have their escapes resolved,
// but for "session", which is JSON.
struct SdpCase {
    std::string where;
    std::string title;
    std::multimap<std::string, std::string> keys;

    bool has(const std::string& key) const { return keys.count(key) != 0; }
    std::string get(const std::string& key, const std::string& fallback = "") const {
        const auto it = keys.find(key);
        return it == keys.end() ? fallback : it->second;
    }
    std::vector<std::string> all(const std::string& key) const {
        std::vector<std::string> out;
        for (auto [it, end] = keys.equal_range(key); it != end; ++it) {
            out.push_back(it->second);
        }
        return out;
    }
};

inline std::vector<SdpCase> sdpCases(const std::string& path) {
    std::vector<SdpCase> cases;
    std::istringstream in(pimav::detail::readText(pimav::detail::kTestData + path));
    std::string* block = nullptr;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (block != nullptr) {
            if (line == ".") {
                block = nullptr;
            } else {
                *block += pimav::detail::unescaped(line) + "\n";
            }
        } else if (line.rfind("=== ", 0) == 0) {
            cases.push_back({path + ":" + std::to_string(number), line.substr(4), {}});
        } else if (!line.empty() && line[0] != '#' && !cases.empty()) {
            const size_t space = line.find(' ');
            const std::string key = line.substr(0, space);
            const std::string rest = space == std::string::npos ? "" : line.substr(space + 1);
            if ((key == "text" || key == "dante") && rest != "fails") {
                cases.back().keys.emplace(key + "-mode", rest);
                block = &cases.back().keys.emplace(key, "")->second;
            } else {
                cases.back().keys.emplace(key, key == "session" ? rest : pimav::detail::unescaped(rest));
            }
        }
    }
    return cases;
}

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
