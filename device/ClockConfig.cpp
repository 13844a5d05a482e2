#include "pimAvMngApi/device/ClockConfig.h"

#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"

int ClockConfig::setClockReference(ClockInterface_en ref) {
    switch (ref) {
        case CLOCK_REF_AUTO_PTP:
            m_clock_ref = ref;
            return 0;
        case CLOCK_REF_AUTO_EXTERNAL: {
            // Only the LARCH audio boards can follow an external reference.
            const BoardModelType model = SystemDefaultCfg::getInstance()->getBoardModel().getModel();
            if (model == LARCH_MADI || model == LARCH_AES1616 || model == LARCH_ANA88) {
                m_clock_ref = ref;
                return 0;
            }
            return -8;
        }
        default:
            return -8;
    }
}

int ClockConfig::getClockRefTypeStr(ClockInterface_en ref, std::string& out) const {
    switch (ref) {
        case CLOCK_REF_AUTO_PTP:
            out = "AUTO - PTP BASED";
            break;
        case CLOCK_REF_AUTO_EXTERNAL:
            out = "AUTO - EXTERNAL REFERENCE";
            break;
        default:
            Logger::log(2, "Error unsupported case %s", "getClockRefTypeStr");
            break;
    }
    return 0;
}

std::string ClockConfig::getCurrentClockRefTypeStr() const {
    std::string text;
    getClockRefTypeStr(m_clock_ref, text);
    return text;
}

void ClockConfig::Serialize(Json::Value& out) const {
    out["ref-type"] = static_cast<int>(m_clock_ref);
    out["ref-str"] = getCurrentClockRefTypeStr();
}

void ClockConfig::Deserialize(Json::Value& in) {
    m_clock_ref = static_cast<ClockInterface_en>(in.get("ref-type", 4u).asUInt());
}
