// demo_host: a host program that drives the AV manager (or avmng-emulator) through the
// typed API: it adds a sender session, reads its SDP back and parses it, takes a stream
// of an advertised session as a receiver, saves the running configuration and loads it
// back, reads the system clock, and prints a short summary.
//
//   demo_host [--host H] [--port P]     (see ExampleArgs.h for the defaults)
//
// Exit status 0 when every step succeeded, 1 otherwise.

#include <cstdio>
#include <iostream>
#include <list>
#include <string>
#include <zmq.hpp>

#include "ExampleArgs.h"
#include "pimAvMngApi/adv/AdvSessionsDb.h"
#include "pimAvMngApi/api/AvMngApi.h"
#include "pimAvMngApi/device/CfgFileTable.h"
#include "pimAvMngApi/device/ClockConfig.h"
#include "pimAvMngApi/device/ClockCounters.h"
#include "pimAvMngApi/device/ClockStatus.h"
#include "pimAvMngApi/model/AudioSource.h"
#include "pimAvMngApi/model/DestinationApi.h"
#include "pimAvMngApi/model/SourceApi.h"
#include "pimAvMngApi/platform/ChannelList.h"
#include "pimAvMngApi/sdp/SdpConverter.h"

namespace {

int g_failures = 0;

bool step(const char* what, int rc) {
    std::printf("%-48s %s", what, rc == 0 ? "ok" : "FAILED");
    if (rc != 0) {
        std::printf(" (%d)", rc);
        ++g_failures;
    }
    std::printf("\n");
    return rc == 0;
}

ChannelList channels(unsigned count) {
    ChannelList list;
    for (unsigned i = 0; i < count; ++i) {
        ChannelId channel;
        channel.m_channel = i;
        list.addChannelEntry(channel);
    }
    return list;
}

}  // namespace

int main(int argc, char** argv) {
    if (ExampleArgs::printVersion(argc, argv)) {
        return 0;
    }
    ExampleArgs args;
    if (!args.parse(argc, argv)) {
        std::cerr << "usage: " << argv[0] << " [--host H] [--port P]\n";
        return 2;
    }
    zmq::context_t context(1);
    AvMngApi api;
    api.jsonApi.ipcPort = args.port;
    if (!step("connect to the AV manager", api.init(context, args.host))) {
        return 1;
    }

    // 1. A sender session with one 8-channel L24 audio stream.
    SourceApi sender;
    sender.m_name = "Demo talker";
    AudioSource audio;
    audio.m_name = "Demo talker audio";
    audio.m_channels = channels(8);
    audio.m_codec.setCodec("L24");
    audio.m_ptime = 1000;
    audio.m_channel_freq = 48000;
    sender.m_audio_sources.push_back(audio);
    step("add sender session", api.addSourceSession(&sender));
    const session_id_t senderId = sender.m_session_id;
    const std::string transport =
        sender.m_audio_sources.empty() ? "-" : sender.m_audio_sources.front().m_transport.toString();

    // 2. Its SDP, read back and parsed.
    std::string sdp;
    step("read the sender's SDP", api.getSessionSdp(senderId, &sdp));
    SdpConverter converter;
    SdpSession parsed;
    step("parse the sender's SDP", converter.parseSdp(sdp));
    converter.getSdpConfig(parsed);

    // 3. A receiver of the first advertised session's first stream.
    AdvSessionsDb advertised;
    step("list advertised sessions", api.getAdvertisedSessionList(&advertised));
    session_id_t receiverId = 0;
    std::string advertisedName = "-";
    if (advertised.m_entries.empty()) {
        step("take an advertised stream (none advertised)", -3);
    } else {
        const auto& first = *advertised.m_entries.begin();
        DestinationApi receiver;
        receiver.m_name = "Demo listener";
        receiver.m_rem_sid.m_id = first.first;
        receiver.m_rem_sid.m_media_idx = 0;
        receiver.m_channels = channels(2);
        step("take an advertised stream as receiver", api.addDestinationSession(&receiver));
        receiverId = receiver.m_session_id;
        SdpSession advertisedSession;
        first.second.getSession(advertisedSession);
        advertisedName = advertisedSession.m_info;
    }

    // 4. Save the running configuration, clear it, and load it back.
    std::string name = "demo";
    step("save running configuration at position 1", api.fileCfgSaveRunning(1, &name, false));
    step("load the default configuration", api.fileCfgLoadDefaultToRunning());
    std::list<unsigned long long> senders;
    std::list<unsigned long long> receivers;
    api.getResourceAllocatedIds(senders, receivers);
    const size_t afterDefault = senders.size() + receivers.size();
    step("load configuration 1 to running", api.fileCfgLoadCfgToRunning(1));
    senders.clear();
    receivers.clear();
    step("list allocated session ids", api.getResourceAllocatedIds(senders, receivers));
    const size_t restored = senders.size() + receivers.size();
    step("sessions restored from the saved file", restored == (receiverId != 0 ? 2u : 1u) ? 0 : -16);
    CfgFileTable table;
    step("read the saved configuration table", api.fileCfgGetTable(&table));

    // 5. The system clock.
    ClockConfig clockConfig;
    ClockStatus clockStatus;
    ClockCounters clockCounters;
    step("read the system clock", api.getSystemClockInfo(&clockConfig, &clockStatus, &clockCounters, nullptr));

    std::printf("\nSummary\n");
    std::printf("  sender session     %llu \"%s\", %zu stream(s), transport %s\n",
                static_cast<unsigned long long>(senderId), sender.m_name.c_str(), sender.m_audio_sources.size(),
                transport.c_str());
    std::printf("  sender SDP         %zu bytes, %zu media, origin session %llu\n", sdp.size(), parsed.m_media.size(),
                static_cast<unsigned long long>(parsed.m_session_id));
    std::printf("  advertised         %zu session(s); receiver %llu takes \"%s\"\n", advertised.m_entries.size(),
                static_cast<unsigned long long>(receiverId), advertisedName.c_str());
    std::printf("  configuration      saved at 1 [%s], %zu session(s) after default, %zu after reload\n",
                table.m_files[1].m_name.c_str(), afterDefault, restored);
    std::printf("  clock              %s, system %s, interface %s, reference %s\n",
                clockConfig.getCurrentClockRefTypeStr().c_str(), clockStatus.getCurrentSystemClockStr().c_str(),
                clockStatus.getCurrentInterfaceClockStr().c_str(), clockStatus.getCurrentReferenceClockStr().c_str());
    std::printf("  result             %s\n", g_failures == 0 ? "all steps succeeded" : "some steps FAILED");
    return g_failures == 0 ? 0 : 1;
}
