#include "pimAvMngApi/device/ClockStatus.h"

#include "pimAvMngApi/platform/Logger.h"
#include "platform/WordTable.h"

namespace {

using pimav::detail::WordRow;
using pimav::detail::wordOf;

constexpr WordRow<int32_t> kSystemClockWords[] = {
    {ClockStatus::SYSTEM_CLOCK_LOCKED, "LOCKED"},
};
constexpr WordRow<int32_t> kInterfaceClockWords[] = {
    {ClockStatus::INTERFACE_CLOCK_LOCKED, "LOCKED"},
    {ClockStatus::INTERFACE_CLOCK_FAIL, "FAIL"},
};
constexpr WordRow<int32_t> kCurrentRefWords[] = {
    {ClockStatus::CURRENT_REF_INTERNAL_OSCILLATOR, "INTERNAL OSCILLATOR"},
    {ClockStatus::CURRENT_REF_EXTERNAL_REFERENCE, "EXTERNAL REFERENCE"},
};

}  // namespace

std::string ClockStatus::systemClockText(int32_t status) {
    return std::string(wordOf(kSystemClockWords, status, "FREERUN"));
}

std::string ClockStatus::interfaceClockText(int32_t status) {
    return std::string(wordOf(kInterfaceClockWords, status, "ACQUIRING"));
}

std::string ClockStatus::currentRefText(int32_t ref) {
    return std::string(wordOf(kCurrentRefWords, ref, "PTP SLAVE"));
}

int ClockStatus::getClockStatus(ClockStatus_en* system, ClockInterfaceStatus_en* iface) const {
    if (system == nullptr || iface == nullptr) {
        Logger::log(2, "%s:: Parameter is null.", "getClockStatus");
        return -4;
    }
    *system = m_system_status;
    *iface = m_interface_status;
    return 0;
}

int ClockStatus::setClockInterfaceStatus(ClockInterfaceStatus_en status) {
    const ClockStatus_en system =
        status == INTERFACE_CLOCK_LOCKED ? SYSTEM_CLOCK_LOCKED : SYSTEM_CLOCK_FREERUN;
    if (system != m_system_status) {
        Logger::log(5, "System clock changed from %s to %s", systemClockText(m_system_status).c_str(),
                    systemClockText(system).c_str());
        m_system_status = system;
    }
    if (status != m_interface_status) {
        Logger::log(5, "Interface clock changed from %s to %s",
                    interfaceClockText(m_interface_status).c_str(), interfaceClockText(status).c_str());
        m_interface_status = status;
    }
    return 0;
}

int ClockStatus::setCurrentClockReference(ClockCurrentRef_en ref) {
    if (ref != m_current_ref) {
        Logger::log(5, "Clock reference changed from %d to %d", static_cast<int>(m_current_ref),
                    static_cast<int>(ref));
    }
    m_current_ref = ref;
    return 0;
}

int ClockStatus::getSystemClockStr(ClockStatus_en status, std::string& out) const {
    out = systemClockText(status);
    return 0;
}

int ClockStatus::getInterfaceClockStr(ClockInterfaceStatus_en status, std::string& out) const {
    out = interfaceClockText(status);
    return 0;
}

std::string ClockStatus::getCurrentSystemClockStr() const {
    return systemClockText(m_system_status);
}

std::string ClockStatus::getCurrentInterfaceClockStr() const {
    return interfaceClockText(m_interface_status);
}

std::string ClockStatus::getCurrentReferenceClockStr() const {
    return currentRefText(m_current_ref);
}

void ClockStatus::Serialize(Json::Value& out) const {
    Json::Value& system = out["system"];
    system["code"] = static_cast<int>(m_system_status);
    system["string"] = getCurrentSystemClockStr();
    Json::Value& iface = out["interface"];
    iface["code"] = static_cast<int>(m_interface_status);
    iface["string"] = getCurrentInterfaceClockStr();
    Json::Value& ref = out["current-ref"];
    ref["code"] = static_cast<int>(m_current_ref);
    ref["string"] = getCurrentReferenceClockStr();
}

void ClockStatus::Deserialize(Json::Value& in) {
    m_system_status = static_cast<ClockStatus_en>(in["system"].get("code", 1u).asUInt());
    m_interface_status = static_cast<ClockInterfaceStatus_en>(in["interface"].get("code", 2u).asUInt());
    m_current_ref = static_cast<ClockCurrentRef_en>(in["current-ref"].get("code", 0u).asUInt());
}
