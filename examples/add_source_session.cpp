// Adds a sender session with one stereo L24 audio stream through the typed API and
// prints the SDP that the daemon generated for it.
//
//   add_source_session [--host H] [--port P] [--name N] [--transport A.B.C.D] [--udp PORT]
//
// Host and port default to the AVMNG_HOST and AVMNG_PORT environment variables, then
// to 127.0.0.1 and 5559 (the device's own daemon, or avmng-emulator on a development
// machine).

#include <cstdlib>
#include <iostream>
#include <string>
#include <zmq.hpp>

#include "ExampleArgs.h"
#include "pimAvMngApi/pimAvMngApi.h"

namespace {

int usage(const char* prog) {
    std::cerr << "usage: " << prog << " [--host H] [--port P] [--name N] [--transport A.B.C.D] [--udp PORT]\n";
    return 2;
}

int fail(AvMngApi& api, const char* what, int code) {
    ErrorReport report;
    api.getLastErrorMessage(report);
    std::cerr << what << " failed with " << code;
    if (report.code != 0) {
        std::cerr << " (" << report.text << ")";
    }
    std::cerr << "\n";
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (ExampleArgs::printVersion(argc, argv)) {
        return 0;
    }
    ExampleArgs args;
    if (!args.parse(argc, argv)) {
        return usage(argv[0]);
    }
    const std::string name = args.get("name", "example sender");
    const std::string transport = args.get("transport", "239.69.1.10");
    const int udp = std::atoi(args.get("udp", "5004").c_str());

    zmq::context_t context;
    AvMngApi api;
    api.jsonApi.ipcPort = args.port;
    if (int rc = api.init(context, args.host); rc < 0) {
        return fail(api, "init", rc);
    }

    AudioSource audio;
    audio.m_name = name + " audio";
    if (!audio.m_transport.fromString(transport)) {
        std::cerr << "not an IPv4 address: " << transport << "\n";
        return 2;
    }
    audio.m_udp_port = udp;
    audio.m_codec.setCodec("L24");
    audio.m_ptime = 1000;
    audio.m_channel_freq = 48000;
    for (uint32_t channel = 0; channel < 2; ++channel) {
        audio.m_channels.addChannelEntry(ChannelId(DaifType(), 0, channel));
    }

    SourceApi session;
    session.m_name = name;
    session.m_audio_sources.push_back(audio);

    if (int rc = api.addSourceSession(&session); rc < 0) {
        return fail(api, "addSourceSession", rc);
    }
    if (session.m_session_id == 0) {
        // The whole reply was read back into the record: a refusal carries no session id.
        std::cerr << "the daemon did not add the session (no session id in its reply)\n";
        return 1;
    }
    std::cout << "session " << session.m_session_id << " \"" << session.m_name << "\" added\n";

    std::string sdp;
    if (int rc = api.getSessionSdp(session.m_session_id, &sdp); rc < 0) {
        return fail(api, "getSessionSdp", rc);
    }
    if (sdp.empty()) {
        std::cout << "(the daemon returned no SDP text)\n";
        return 0;
    }
    std::cout << sdp;
    if (sdp.back() != '\n') {
        std::cout << "\n";
    }
    return 0;
}
