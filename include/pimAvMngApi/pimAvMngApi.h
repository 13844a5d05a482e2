#pragma once

// Umbrella header: every public header of libpimAvMngApi.
// Keep one section per folder, sorted, one line per header.

// platform
#include "pimAvMngApi/platform/Alarm.h"
#include "pimAvMngApi/platform/AlarmSeverity.h"
#include "pimAvMngApi/platform/ChannelId.h"
#include "pimAvMngApi/platform/ChannelList.h"
#include "pimAvMngApi/platform/ClientJsonApi.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/ErrorReport.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"
#include "pimAvMngApi/platform/IpcMsg.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/PacketTimeOptions.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"
#include "pimAvMngApi/platform/VideoFormat.h"

// model
#include "pimAvMngApi/model/AncillaryStreamData.h"
#include "pimAvMngApi/model/AudioSource.h"
#include "pimAvMngApi/model/AudioStreamData.h"
#include "pimAvMngApi/model/AvGlobalCfg.h"
#include "pimAvMngApi/model/ChannelChanges.h"
#include "pimAvMngApi/model/ChannelTables.h"
#include "pimAvMngApi/model/DaifType.h"
#include "pimAvMngApi/model/DestinationApi.h"
#include "pimAvMngApi/model/DestinationApiSessionSel.h"
#include "pimAvMngApi/model/HdmiAudioOffset.h"
#include "pimAvMngApi/model/InterfaceLoopBack.h"
#include "pimAvMngApi/model/IpAddrCfg.h"
#include "pimAvMngApi/model/IpAddress.h"
#include "pimAvMngApi/model/RedundantType.h"
#include "pimAvMngApi/model/Rtp.h"
#include "pimAvMngApi/model/SdiData.h"
#include "pimAvMngApi/model/SdiOffset.h"
#include "pimAvMngApi/model/SdiOffsetList.h"
#include "pimAvMngApi/model/SdiVpgData.h"
#include "pimAvMngApi/model/SessionBasicInfo.h"
#include "pimAvMngApi/model/SessionConfigData.h"
#include "pimAvMngApi/model/SessionConnectionInfo.h"
#include "pimAvMngApi/model/SessionStatus.h"
#include "pimAvMngApi/model/SessionStreamList.h"
#include "pimAvMngApi/model/SessionType.h"
#include "pimAvMngApi/model/Source.h"
#include "pimAvMngApi/model/SourceApi.h"
#include "pimAvMngApi/model/Ssrc.h"
#include "pimAvMngApi/model/State.h"
#include "pimAvMngApi/model/StreamClass.h"
#include "pimAvMngApi/model/StreamData.h"
#include "pimAvMngApi/model/StreamStatus.h"
#include "pimAvMngApi/model/StreamType.h"
#include "pimAvMngApi/model/TpcStatistics.h"
#include "pimAvMngApi/model/TributaryType.h"
#include "pimAvMngApi/model/UdpPort.h"
#include "pimAvMngApi/model/UserNotifications.h"
#include "pimAvMngApi/model/VideoRefOutputCfg.h"
#include "pimAvMngApi/model/VideoSource.h"
#include "pimAvMngApi/model/VideoStreamData.h"
#include "pimAvMngApi/model/VideoTimingParameters.h"
#include "pimAvMngApi/model/Vlan.h"
#include "pimAvMngApi/model/VolumeGainApi.h"
#include "pimAvMngApi/model/VtcStatus.h"

// device
#include "pimAvMngApi/device/BitstreamType.h"
#include "pimAvMngApi/device/BoardModel.h"
#include "pimAvMngApi/device/BoardModelType.h"
#include "pimAvMngApi/device/CfgFileInfo.h"
#include "pimAvMngApi/device/CfgFileTable.h"
#include "pimAvMngApi/device/ClockConfig.h"
#include "pimAvMngApi/device/ClockCounters.h"
#include "pimAvMngApi/device/ClockStatus.h"
#include "pimAvMngApi/device/Codec.h"

// sdp

// adv

// api
#include "pimAvMngApi/api/Aes67Commands.h"
#include "pimAvMngApi/api/AvMngApiJson.h"
