#pragma once

#include <cstdint>
#include <string>

/// Command ids of the AV manager daemon's IPC link; a command id travels in IpcMsg as
/// an unsigned int. Ids 1 and 42 belong to the command set but the client sends neither.
enum aes67_command_id_t : uint32_t {
    AES67_GET_SESSION_SDP = 0,                    ///< GET Session SDP
    AES67_SAVE_SDP_INFO = 1,                      ///< Save SDP info
    AES67_ADD_SOURCE_SESSION = 2,                 ///< CFG Add Source Session
    AES67_ADD_DESTINATION_SESSION = 3,            ///< CFG Add Destination Session
    AES67_REMOVE_SESSION = 4,                     ///< CFG remove Session
    AES67_GET_SOURCE_LIST = 5,                    ///< GET Source List
    AES67_GET_DESTINATION_LIST = 6,               ///< GET Destination list
    AES67_GET_ADVERTISED_SESSIONS = 7,            ///< GET Advertised sessions
    AES67_UPDATE_SESSION = 8,                     ///< CFG Update session
    AES67_FILE_SAVE_RUNNING = 9,                  ///< FILE Save running
    AES67_GET_RUNNING_CFG = 10,                   ///< GET running configuration
    AES67_FILE_LOAD_TO_RUNNING = 11,              ///< FILE Load to running
    AES67_FILE_LOAD_CFG_TO_RUNNING = 12,          ///< FILE Load configuration to running
    AES67_FILE_GET_TABLE = 13,                    ///< FILE GET file Table info
    AES67_ADD_DESTINATION_SESSION_MANUALLY = 14,  ///< CFG Add Destination Session Manually
    AES67_GET_SESSION_BASIC_INFO = 15,            ///< GET Session basic info
    AES67_GET_CHANNEL_TABLE = 16,                 ///< GET Channel Table
    AES67_GET_DIGITAL_INTERFACES = 17,            ///< GET Digital interface list
    AES67_GET_WEB_SERVICES = 18,                  ///< GET Web services list
    AES67_GET_CODECS = 19,                        ///< GET Codec List
    AES67_GET_SESSION_TPC_STATISTICS = 20,        ///< GET Session TPC statistics
    AES67_CLK_SET_CFG = 21,                       ///< CLK SET Configuration
    AES67_CLK_GET_INFO = 22,                      ///< CLK GET Info: config status and counters
    AES67_PAUSE_RESUME_SESSION = 23,              ///< Pause or resume a session
    AES67_GET_ALARM_STATUS = 24,                  ///< GET alarm status of system
    AES67_FILE_SET_STARTUP_POS = 25,              ///< FILE Select startup config
    AES67_FILE_REMOVE_CFG = 26,                   ///< FILE Remove saved config
    AES67_GET_GLOBAL_CFG = 27,                    ///< GET Global config
    AES67_SET_GLOBAL_CFG = 28,                    ///< CFG Global config
    AES67_SET_SDI_PATTERN_GENERATOR_CFG = 29,     ///< SET SDI pattern generator config
    AES67_SET_HDMI_PATTERN_GENERATOR_CFG = 30,    ///< SET HDMI pattern generator config
    AES67_GET_SDI_INTERFACE_INFO = 31,            ///< GET SDI interface information
    AES67_GET_SDI_OFFSETS = 32,                   ///< GET SDI Offsets
    AES67_SET_SDI_OFFSETS = 33,                   ///< SET SDI Offsets
    AES67_GET_HDMI_AUDIO_OFFSET = 34,             ///< GET HDMI Audio Offset
    AES67_SET_HDMI_AUDIO_OFFSET = 35,             ///< SET HDMI Audio Offset
    AES67_GET_SESSION_COUNTERS = 36,              ///< GET Session Counters
    AES67_GET_SDI_VPG_INFO = 37,                  ///< GET SDI VPG information
    AES67_GET_SESSION_INTERNAL_STATUS = 38,       ///< GET Session internal status and counters
    AES67_RESET_SYSTEM_CLOCK_COUNTERS = 39,       ///< Reset System Clock Counters
    AES67_GET_USER_NOTIFICATIONS = 40,            ///< GET Notification List
    AES67_GET_TDM_CFG_OPTIONS = 41,               ///< GET TDM option list
    AES67_REMOVE_EXTERNAL_ADVERTISEMENT = 42,     ///< Remove external advertisement
    AES67_SET_INTERFACE_LOOPBACK_MODE = 43,       ///< SET Interface Loopback mode
    AES67_GET_AUDIO_CFG_OPTIONS = 44,             ///< GET Audio Config Options
    AES67_GET_VIDEO_REFERENCE_CFG = 45,           ///< GET video reference Config
    AES67_SET_VIDEO_REFERENCE_CFG = 46,           ///< SET video reference Config
    AES67_GET_DEFAULT_CFG_PARAMS = 47,            ///< GET the default configuration parameters
    AES67_GET_INTERNAL_DEBUG_INFO = 48,           ///< GET internal debug info
    AES67_DISCONNECT_CHANNELS = 49,               ///< CFG disconnect channel(s) from session
    AES67_GET_LIST_OF_EXISTING_STREAMS = 50,      ///< GET senders info
    AES67_GET_RESOURCE_ALLOCATED_IDS = 51,        ///< GET list of allocated session ids.
    AES67_SET_SOURCE_CHANNEL_GAIN = 52,           ///< SET set gain of channels on Talker XC
    AES67_SET_DESTINATION_CHANNEL_GAIN = 53,      ///< SET set gain of channels on Listener XC
    AES67_GET_SOURCE_CHANNEL_GAIN = 54,           ///< GET get gain of channels in source streams
    AES67_GET_DESTINATION_CHANNEL_GAIN = 55,      ///< GET get gain of channels on Listener XC
};

/// Names of the command ids, for log lines and error reports.
class Aes67Commands {
public:
    /// Number of command ids (0 to kCommandCount - 1).
    static constexpr uint32_t kCommandCount = 56;

    /// Replaces `description` with the text of `id`. For an id above the last one,
    /// "not recognized" is appended to whatever `description` holds. Always returns 0.
    /// The table is built on the first call (thread-safe) and is read-only afterwards.
    static int getCommandNameStr(aes67_command_id_t id, std::string& description);
};
