#include "pimAvMngApi/api/Aes67Commands.h"

namespace {

struct CommandRow {
    aes67_command_id_t id;
    std::string description;
};

}  // namespace

int Aes67Commands::getCommandNameStr(aes67_command_id_t id, std::string& description) {
    // Built once, on first use; the runtime guards the initialisation against
    // concurrent first calls.
    static const CommandRow command_table[kCommandCount] = {
        {AES67_GET_SESSION_SDP, "GET Session SDP"},
        {AES67_SAVE_SDP_INFO, "Save SDP info"},
        {AES67_ADD_SOURCE_SESSION, "CFG Add Source Session"},
        {AES67_ADD_DESTINATION_SESSION, "CFG Add Destination Session"},
        {AES67_REMOVE_SESSION, "CFG remove Session"},
        {AES67_GET_SOURCE_LIST, "GET Source List"},
        {AES67_GET_DESTINATION_LIST, "GET Destination list"},
        {AES67_GET_ADVERTISED_SESSIONS, "GET Advertised sessions"},
        {AES67_UPDATE_SESSION, "CFG Update session"},
        {AES67_FILE_SAVE_RUNNING, "FILE Save running"},
        {AES67_GET_RUNNING_CFG, "GET running configuration"},
        {AES67_FILE_LOAD_TO_RUNNING, "FILE Load to running"},
        {AES67_FILE_LOAD_CFG_TO_RUNNING, "FILE Load configuration to running"},
        {AES67_FILE_GET_TABLE, "FILE GET file Table info"},
        {AES67_ADD_DESTINATION_SESSION_MANUALLY, "CFG Add Destination Session Manually"},
        {AES67_GET_SESSION_BASIC_INFO, "GET Session basic info"},
        {AES67_GET_CHANNEL_TABLE, "GET Channel Table"},
        {AES67_GET_DIGITAL_INTERFACES, "GET Digital interface list"},
        {AES67_GET_WEB_SERVICES, "GET Web services list"},
        {AES67_GET_CODECS, "GET Codec List"},
        {AES67_GET_SESSION_TPC_STATISTICS, "GET Session TPC statistics"},
        {AES67_CLK_SET_CFG, "CLK SET Configuration"},
        {AES67_CLK_GET_INFO, "CLK GET Info: config status and counters"},
        {AES67_PAUSE_RESUME_SESSION, "Pause or resume a session"},
        {AES67_GET_ALARM_STATUS, "GET alarm status of system"},
        {AES67_FILE_SET_STARTUP_POS, "FILE Select startup config"},
        {AES67_FILE_REMOVE_CFG, "FILE Remove saved config"},
        {AES67_GET_GLOBAL_CFG, "GET Global config"},
        {AES67_SET_GLOBAL_CFG, "CFG Global config"},
        {AES67_SET_SDI_PATTERN_GENERATOR_CFG, "SET SDI pattern generator config"},
        {AES67_SET_HDMI_PATTERN_GENERATOR_CFG, "SET HDMI pattern generator config"},
        {AES67_GET_SDI_INTERFACE_INFO, "GET SDI interface information"},
        {AES67_GET_SDI_OFFSETS, "GET SDI Offsets"},
        {AES67_SET_SDI_OFFSETS, "SET SDI Offsets"},
        {AES67_GET_HDMI_AUDIO_OFFSET, "GET HDMI Audio Offset"},
        {AES67_SET_HDMI_AUDIO_OFFSET, "SET HDMI Audio Offset"},
        {AES67_GET_SESSION_COUNTERS, "GET Session Counters"},
        {AES67_GET_SDI_VPG_INFO, "GET SDI VPG information"},
        {AES67_GET_SESSION_INTERNAL_STATUS, "GET Session internal status and counters"},
        {AES67_RESET_SYSTEM_CLOCK_COUNTERS, "Reset System Clock Counters"},
        {AES67_GET_USER_NOTIFICATIONS, "GET Notification List"},
        {AES67_GET_TDM_CFG_OPTIONS, "GET TDM option list"},
        {AES67_REMOVE_EXTERNAL_ADVERTISEMENT, "Remove external advertisement"},
        {AES67_SET_INTERFACE_LOOPBACK_MODE, "SET Interface Loopback mode"},
        {AES67_GET_AUDIO_CFG_OPTIONS, "GET Audio Config Options"},
        {AES67_GET_VIDEO_REFERENCE_CFG, "GET video reference Config"},
        {AES67_SET_VIDEO_REFERENCE_CFG, "SET video reference Config"},
        {AES67_GET_DEFAULT_CFG_PARAMS, "GET the default configuration parameters"},
        {AES67_GET_INTERNAL_DEBUG_INFO, "GET internal debug info"},
        {AES67_DISCONNECT_CHANNELS, "CFG disconnect channel(s) from session"},
        {AES67_GET_LIST_OF_EXISTING_STREAMS, "GET senders info"},
        {AES67_GET_RESOURCE_ALLOCATED_IDS, "GET list of allocated session ids."},
        {AES67_SET_SOURCE_CHANNEL_GAIN, "SET set gain of channels on Talker XC"},
        {AES67_SET_DESTINATION_CHANNEL_GAIN, "SET set gain of channels on Listener XC"},
        {AES67_GET_SOURCE_CHANNEL_GAIN, "GET get gain of channels in source streams"},
        {AES67_GET_DESTINATION_CHANNEL_GAIN, "GET get gain of channels on Listener XC"},
    };
    if (id >= kCommandCount) {
        description += "not recognized";
        return 0;
    }
    for (const CommandRow& row : command_table) {
        if (row.id == id) {
            description = row.description;
            return 0;
        }
    }
    return 0;
}
