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

#include "pimAvMngApi/pimAvMngApi.h"

namespace {

struct Options {
    std::string host = "127.0.0.1";
    unsigned port = 5559;
    std::string name = "example sender";
    std::string transport = "239.69.1.10";
    int udp = 5004;
};

int usage(const char* prog) {
    std::cerr << "usage: " << prog
              << " [--host H] [--port P] [--name N] [--transport A.B.C.D] [--udp PORT]\n";
    return 2;
}

bool parseArgs(int argc, char** argv, Options& o) {
    if (const char* h = std::getenv("AVMNG_HOST")) {
        o.host = h;
    }
    if (const char* p = std::getenv("AVMNG_PORT")) {
        o.port = static_cast<unsigned>(std::strtoul(p, nullptr, 10));
    }
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (i + 1 >= argc) {
            return false;
        }
        const std::string value = argv[++i];
        if (arg == "--host") {
            o.host = value;
        } else if (arg == "--port") {
            o.port = static_cast<unsigned>(std::strtoul(value.c_str(), nullptr, 10));
        } else if (arg == "--name") {
            o.name = value;
        } else if (arg == "--transport") {
            o.transport = value;
        } else if (arg == "--udp") {
            o.udp = std::atoi(value.c_str());
        } else {
            return false;
        }
    }
    return o.port > 0 && o.port < 65536;
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
    Options options;
    if (!parseArgs(argc, argv, options)) {
        return usage(argv[0]);
    }

    zmq::context_t context;
    AvMngApi api;
    api.jsonApi.ipcPort = options.port;
    if (int rc = api.init(context, options.host); rc < 0) {
        return fail(api, "init", rc);
    }

    AudioSource audio;
    audio.m_name = options.name + " audio";
    if (!audio.m_transport.fromString(options.transport)) {
        std::cerr << "not an IPv4 address: " << options.transport << "\n";
        return 2;
    }
    audio.m_udp_port = options.udp;
    audio.m_codec.setCodec("L24");
    audio.m_ptime = 1000;
    audio.m_channel_freq = 48000;
    for (uint32_t channel = 0; channel < 2; ++channel) {
        audio.m_channels.addChannelEntry(ChannelId(DaifType(), 0, channel));
    }

    SourceApi session;
    session.m_name = options.name;
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
