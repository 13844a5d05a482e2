#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pimAvMngApi/device/CfgFileInfo.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// The saved configuration files: eleven positions and the one loaded at start-up.
///
/// Positions 0 to 9 hold user configurations, in the configuration directory of
/// SystemDefaultCfg with a file name made of the board's prefix, the position and
/// ".json": "hdmiConfig" on JUNIPER and JUNIPER_QH with an HDMI-ST2110 module,
/// "sdiBiDirConfig" on JUNIPER with an SDI-BIDIR-ST2110 module, "tr04Config" on DAMSON
/// with an SDI-TR04 module, "config" on every other board. Position 10 is the system
/// start-up configuration "/etc/aes67/configSys0.json", named "System Startup".
///
/// JSON form: {"list": [{"index", "name", "size"} for each position with a size, in
/// position order; null when there is none], "startup": start-up position}. Reading
/// updates the name and size of each listed position below 11 (logged at level 5;
/// other indexes are skipped) and takes "startup" (default 10) without a range check.
class CfgFileTable : public IJsonSerializable {
public:
    /// Number of positions, the user positions and the start-up one.
    static constexpr unsigned int kNumPositions = 11;
    static constexpr unsigned int kNumUserPositions = 10;  ///< Number of user positions, 0 to 9.
    static constexpr unsigned int kDefaultPosition = 10;   ///< The system start-up position.

    CfgFileTable();
    ~CfgFileTable() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// The first user position (0 to 9) whose size is 0, logged at level 6; -16 when
    /// all ten are occupied.
    int getFirstEmptyPosition();
    /// 0 and the position selected; -8 for a position above 10; -23 (logged at level 2)
    /// for a position without a name or without a size.
    int setStartupPosition(unsigned int pos);
    /// Selects the system start-up position (10). Returns 0.
    int setStartupPositiontoDefault();
    /// The position loaded at start-up.
    unsigned int getStartupPosition() const { return m_startup_pos; }
    /// True when the start-up position is the system one (10).
    bool isStartupTheDefault() const { return m_startup_pos == kDefaultPosition; }

    /// The position's record, nullptr above 10.
    const CfgFileInfo* getFileInfo(unsigned int pos) const;
    /// Records a saved configuration at a position (0, or -16 above 10).
    int setFileInfo(unsigned int pos, const std::string& name, uint32_t size);
    /// Marks a position empty: name cleared, size 0 (0, or -16 above 10). A start-up
    /// selection of that position goes back to the default.
    int clearFileInfo(unsigned int pos);

    /// The file name prefix of the board that SystemDefaultCfg describes.
    static std::string getBoardFilePrefix();

    std::vector<CfgFileInfo> m_files;           ///< The eleven positions, indexed by position.
    uint32_t m_startup_pos = kDefaultPosition;  ///< The position loaded at start-up ("startup").
};
