#include "pimAvMngApi/device/CfgFileTable.h"

#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"

std::string CfgFileTable::getBoardFilePrefix() {
    const BoardModel board = SystemDefaultCfg::getInstance()->getBoardModel();
    const BitstreamType::module_t module = board.getModule();
    switch (board.getModel()) {
        case JUNIPER:
            if (module == BitstreamType::MODULE_HDMI_ST2110) {
                return "hdmiConfig";
            }
            if (module == BitstreamType::MODULE_SDI_BIDIR_ST2110) {
                return "sdiBiDirConfig";
            }
            break;
        case JUNIPER_QH:
            if (module == BitstreamType::MODULE_HDMI_ST2110) {
                return "hdmiConfig";
            }
            break;
        case DAMSON:
            if (module == BitstreamType::MODULE_SDI_TR04) {
                return "tr04Config";
            }
            break;
        default:
            break;
    }
    return "config";
}

CfgFileTable::CfgFileTable() : m_files(kNumPositions) {
    std::string dir;
    SystemDefaultCfg::getInstance()->getCfgFilePath(&dir);
    const std::string prefix = getBoardFilePrefix();
    for (unsigned int i = 0; i < kNumUserPositions; ++i) {
        m_files[i].m_path = dir + prefix + std::to_string(i) + ".json";
    }
    // The system start-up file is always number 0 in the fixed system directory.
    m_files[kDefaultPosition].m_path = "/etc/aes67/configSys0.json";
    m_files[kDefaultPosition].m_name = "System Startup";
}

int CfgFileTable::getFirstEmptyPosition() {
    for (unsigned int i = 0; i < kNumUserPositions; ++i) {
        if (m_files[i].m_size == 0) {
            Logger::log(6, "%s: Empty Position Found at %d", "getFirstEmptyPosition", static_cast<int>(i));
            return static_cast<int>(i);
        }
    }
    return -16;
}

int CfgFileTable::setStartupPosition(unsigned int pos) {
    if (pos > kDefaultPosition) {
        return -8;
    }
    if (!m_files[pos].m_name.empty() && m_files[pos].m_size != 0) {
        m_startup_pos = pos;
        return 0;
    }
    Logger::log(2, "It is not possible to select an empty config file as startup config.");
    return -23;
}

int CfgFileTable::setStartupPositiontoDefault() {
    m_startup_pos = kDefaultPosition;
    return 0;
}

const CfgFileInfo* CfgFileTable::getFileInfo(unsigned int pos) const {
    return pos < kNumPositions ? &m_files[pos] : nullptr;
}

int CfgFileTable::setFileInfo(unsigned int pos, const std::string& name, uint32_t size) {
    if (pos >= kNumPositions) {
        return -16;
    }
    m_files[pos].m_name = name;
    m_files[pos].m_size = size;
    return 0;
}

int CfgFileTable::clearFileInfo(unsigned int pos) {
    if (pos >= kNumPositions) {
        return -16;
    }
    m_files[pos].m_name.clear();
    m_files[pos].m_size = 0;
    if (m_startup_pos == pos) {
        m_startup_pos = kDefaultPosition;
    }
    return 0;
}

void CfgFileTable::Serialize(Json::Value& out) const {
    Json::Value list;  // stays null when no position is occupied
    for (unsigned int i = 0; i < kNumPositions; ++i) {
        const CfgFileInfo& file = m_files[i];
        if (file.m_size == 0) {
            continue;
        }
        Json::Value entry;
        entry["index"] = i;
        entry["name"] = file.m_name;
        entry["size"] = file.m_size;
        list.append(entry);
    }
    out["list"] = list;
    out["startup"] = m_startup_pos;
}

void CfgFileTable::Deserialize(Json::Value& in) {
    Json::Value& list = in["list"];
    if (list.isArray()) {
        for (Json::ArrayIndex i = 0; i < list.size(); ++i) {
            Json::Value& entry = list[i];
            const unsigned int index = entry.get("index", 11u).asUInt();
            const uint32_t size = entry.get("size", 0u).asUInt();
            const std::string name = entry.get("name", "").asString();
            if (index < kNumPositions) {
                m_files[index].m_name = name;
                m_files[index].m_size = size;
                Logger::log(5, "Config file restored: Index %d Name [%s] size [%d] available for use",
                            static_cast<int>(index), name.c_str(), static_cast<int>(size));
            }
        }
    } else if (!list.isNull()) {
        // An object, number or text where the list belongs: a type error for the caller.
        throw Json::LogicError("CfgFileTable: \"list\" is not an array");
    }
    m_startup_pos = in.get("startup", kDefaultPosition).asUInt();
    Logger::log(5, "%s:: m_startup_pos %d", "Deserialize", static_cast<int>(m_startup_pos));
}
