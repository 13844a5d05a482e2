#include "SdptoolSap.h"

#include <json/json.h>
#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <iostream>
#include <system_error>
#include <thread>

#include "SdptoolSupport.h"
#include "UserDocument.h"
#include "sap/SapAnnouncer.h"
#include "sap/SapPacket.h"
#include "sap/UdpSocket.h"

namespace pimav::detail {

namespace {

using Clock = std::chrono::steady_clock;

// The longest wait between two looks at the stop flag.
constexpr std::chrono::milliseconds kTick{100};

volatile std::sig_atomic_t g_stop = 0;

// SIGINT and SIGTERM end the loops (announce sends its deletions first).
void catchStopSignals() {
    struct sigaction action {};
    action.sa_handler = [](int) { g_stop = 1; };
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool readInterface(const std::string& text, IpAddress& address) {
    if (!text.empty() && !address.fromString(text)) {
        std::cerr << "sdptool: --interface needs the interface's IPv4 address, not " << text << std::endl;
        return false;
    }
    return true;
}

bool readEndpoint(const std::string& option, const std::string& text, UdpEndpoint& endpoint) {
    if (!UdpEndpoint::parse(text, endpoint)) {
        std::cerr << "sdptool: " << option << " needs ADDR:PORT with an IPv4 address, not " << text
                  << std::endl;
        return false;
    }
    return true;
}

std::string compactJson(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

// One line (text or JSON) for a packet heard.
void printPacket(const SapPacket& packet, uint16_t port, const UdpEndpoint& from, bool json) {
    SapSdpFields fields;
    readSapSdpFields(packet.sdp, fields);
    SdpConverter converter;
    std::vector<std::string> messages;
    const int rc = checkSdp(converter, packet.sdp, messages);
    const char* type = packet.type == SapMessageType::Delete ? "delete" : "announce";
    const std::string url = sapUrl(packet.origin, port, packet.hash);
    if (!json) {
        std::cout << type << " " << url << " \"" << fields.name << "\" ";
        std::cout << (rc == 0 ? "ok" : "refused (" + std::to_string(rc) + ")") << "\n";
        for (const auto& message : messages) {
            std::cout << "  " << message << "\n";
        }
        std::cout << std::flush;
        return;
    }
    Json::Value line;
    line["type"] = type;
    line["url"] = url;
    line["origin"] = packet.origin.toString();
    char hash[8];
    std::snprintf(hash, sizeof hash, "%04x", static_cast<unsigned>(packet.hash));
    line["hash"] = hash;
    line["from"] = from.toString();
    line["compressed"] = packet.compressed;
    line["name"] = fields.name;
    line["session-id"] = fields.sessionId;
    line["version"] = fields.version;
    line["sdp-ok"] = rc == 0;
    line["sdp-code"] = rc;
    line["sdp-messages"] = Json::arrayValue;
    for (const auto& message : messages) {
        line["sdp-messages"].append(message);
    }
    std::cout << compactJson(line) << std::endl;
}

void printRefusal(SapError error, const UdpEndpoint& from, bool json) {
    if (!json) {
        std::cout << "refused " << sapErrorWord(error) << " from " << from.toString() << std::endl;
        return;
    }
    Json::Value line;
    line["type"] = "refused";
    line["reason"] = sapErrorWord(error);
    line["from"] = from.toString();
    std::cout << compactJson(line) << std::endl;
}

}  // namespace

void addSapSubcommands(CLI::App& app, SapSubcommands& commands) {
    SapAnnounceArgs& a = commands.announceArgs;
    commands.announce = app.add_subcommand("announce", "announce SDP files over SAP as a device would");
    CLI::App& announce = *commands.announce;
    announce.add_option("files", a.files, "SDP files")->required();
    announce
        .add_option("--to", a.to,
                    "destination ADDR:PORT: a loopback or unicast address, or a SAP group "
                    "such as 239.255.255.255:9875")
        ->required();
    announce.add_option("--interval", a.interval, "seconds between announcements (default: RFC 2974's rule)")
        ->check(CLI::PositiveNumber);
    announce.add_option("--count", a.count, "announcements per file, then exit (default: until interrupted)");
    announce.add_flag("--delete", a.remove, "send one deletion per file and exit");
    announce.add_option("--ttl", a.ttl, "multicast TTL")->capture_default_str()->check(CLI::Range(1, 255));
    announce.add_option("--interface", a.interfaceAddress, "address of the interface multicast leaves by");
    announce.add_flag("--compress", a.compress, "compress the payloads with zlib");
    announce.add_option("--origin", a.origin,
                        "origin address written in the packets (default: the source "
                        "address of the route to --to)");

    SapListenArgs& l = commands.listenArgs;
    commands.listen = app.add_subcommand("listen", "print the SAP announcements heard on ADDR:PORT");
    CLI::App& listen = *commands.listen;
    listen.add_option("--on", l.on, "ADDR:PORT to listen on: a loopback or unicast address, or a SAP group")
        ->required();
    listen.add_option("--interface", l.interfaceAddress, "address of the interface that joins the group");
    listen.add_flag("--json", l.json, "one JSON object per line");
    listen.add_option("--seconds", l.seconds, "stop after this time (default: when interrupted)")
        ->check(CLI::NonNegativeNumber);
}

int runAnnounce(const SapAnnounceArgs& args) {
    UdpEndpoint to;
    IpAddress interfaceAddress;
    SapOrigin origin;
    if (!readEndpoint("--to", args.to, to) || !readInterface(args.interfaceAddress, interfaceAddress)) {
        return 2;
    }
    if (!args.origin.empty() && !SapOrigin::fromText(args.origin, origin)) {
        std::cerr << "sdptool: --origin needs an IPv4 or IPv6 address, not " << args.origin << std::endl;
        return 2;
    }
    std::vector<std::string> texts(args.files.size());
    for (size_t i = 0; i < args.files.size(); ++i) {
        std::string error;
        if (!readUserFile(args.files[i], texts[i], error)) {
            std::cerr << error << std::endl;
            return 2;
        }
    }
    catchStopSignals();
    try {
        UdpSocket socket = UdpSocket::connect(to, args.ttl, interfaceAddress);
        SapAnnouncer::Options options;
        options.origin = args.origin.empty() ? SapOrigin::ipv4(socket.localEndpoint().address) : origin;
        options.interval =
            std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(args.interval));
        options.compress = args.compress;
        std::vector<unsigned> sent(texts.size(), 0);
        bool failed = false;
        SapAnnouncer announcer(options, [&](uint64_t key, SapMessageType type, const std::string& packet) {
            // With --count, a file that has had its announcements stays quiet while the others finish.
            if (type == SapMessageType::Announce && args.count != 0 && sent[key] >= args.count) {
                return;
            }
            sent[key] += type == SapMessageType::Announce ? 1 : 0;
            if (!socket.send(packet)) {
                std::cerr << "sdptool: sending to " << to.toString() << " failed: " << std::strerror(errno)
                          << std::endl;
                failed = true;
            }
        });
        const auto start = Clock::now();
        for (size_t i = 0; i < texts.size(); ++i) {
            if (args.remove) {
                announcer.adopt(i, texts[i], start);
            } else {
                announcer.announce(i, texts[i], start);
            }
        }
        const auto done = [&] {
            return args.remove || (args.count != 0 && std::all_of(sent.begin(), sent.end(), [&](unsigned n) {
                                       return n >= args.count;
                                   }));
        };
        while (!done() && g_stop == 0) {
            const auto now = Clock::now();
            std::this_thread::sleep_for(std::min<Clock::duration>(kTick, *announcer.nextDue() - now));
            announcer.poll(Clock::now());
        }
        if (args.remove || g_stop != 0) {
            announcer.withdrawAll();
        }
        return failed ? 1 : 0;
    } catch (const std::system_error& e) {
        std::cerr << "sdptool: " << e.what() << std::endl;
        return 1;
    }
}

int runListen(const SapListenArgs& args) {
    UdpEndpoint on;
    IpAddress interfaceAddress;
    if (!readEndpoint("--on", args.on, on) || !readInterface(args.interfaceAddress, interfaceAddress)) {
        return 2;
    }
    catchStopSignals();
    try {
        UdpSocket socket = UdpSocket::listen(on, interfaceAddress);
        const UdpEndpoint bound = socket.localEndpoint();
        std::cerr << "sdptool: listening on " << (on.isMulticast() ? on : bound).toString() << std::endl;
        const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                            std::chrono::duration<double>(args.seconds));
        std::string bytes;
        while (g_stop == 0) {
            auto wait = kTick;
            if (args.seconds > 0) {
                const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
                if (left.count() <= 0) {
                    break;
                }
                wait = std::min(wait, left);
            }
            UdpEndpoint from;
            if (!socket.receive(bytes, from, static_cast<int>(wait.count()))) {
                continue;
            }
            SapPacket packet;
            const SapError error = decodeSap(bytes, packet);
            if (error != SapError::None) {
                printRefusal(error, from, args.json);
            } else {
                printPacket(packet, bound.port, from, args.json);
            }
        }
        return 0;
    } catch (const std::system_error& e) {
        std::cerr << "sdptool: " << e.what() << std::endl;
        return 1;
    }
}

}  // namespace pimav::detail
