// Scale driver for the advertised-sessions table: adds, updates, looks up and removes
// tens of thousands of distinct AES67 advertisements and reports the time per
// operation at two table sizes (the cost per operation must not grow with the table),
// the share of the add that is SDP parsing, and the peak memory against the SDP bytes.
//
// Plain main(): this file is linked with benchmark::benchmark but not benchmark_main.

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "pimAvMngApi/adv/AdvSessions.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"
#include "pimAvMngApi/sdp/SdpConverter.h"

namespace {

// CPU time of this thread: the machine is shared, and wall time would count the time
// other processes hold the core. Page faults and system calls are included.
struct Clock {
    using time_point = double;
    static double now() {
        timespec ts{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
        return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
    }
};

double secondsSince(Clock::time_point start) {
    return Clock::now() - start;
}

long peakRssKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void fail(const char* what, size_t index) {
    std::fprintf(stderr, "adv_sessions: %s failed at %zu\n", what, index);
    std::exit(1);
}

// Distinct ids, spread so that the map is not filled in key order only at its end.
session_id_t idOf(size_t i) {
    return 1000000 + i * 7919;
}

// The SDP text of a single-stream AES67 audio session (L24, 48 kHz, 1 ms, PTP reference
// clock), as another device would advertise it.
struct Aes67Sdp {
    uint64_t id = 1;
    std::string name;
    std::string source;
    std::string group;
    unsigned port = 5004;
    unsigned channels = 2;
    uint64_t version = 1;

    std::string text() const {
        return "v=0\no=- " + std::to_string(id) + " " + std::to_string(version) + " IN IP4 " + source + "\ns=" + name +
               "\nt=0 0\nm=audio " + std::to_string(port) + " RTP/AVP 97\nc=IN IP4 " + group +
               "/32\na=rtpmap:97 L24/48000/" + std::to_string(channels) +
               "\na=ptime:1\na=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:0\na=mediaclk:direct=0\n";
    }
};

Aes67Sdp advertisement(size_t i, uint64_t version) {
    Aes67Sdp sdp;
    sdp.id = idOf(i);
    sdp.version = version;
    sdp.name = "Stage box " + std::to_string(i);
    sdp.source = "10." + std::to_string(i / 65536 % 256) + "." + std::to_string(i / 256 % 256) + "." +
                 std::to_string(i % 256);
    sdp.group = "239.1." + std::to_string(i / 256 % 256) + "." + std::to_string(i % 256);
    sdp.port = 5004 + static_cast<unsigned>(i % 1000) * 2;
    sdp.channels = 1 + static_cast<unsigned>(i % 8);
    return sdp;
}

long minorFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

long g_faults = 0;

// Prints the phase's CPU time, its cost per operation and the page faults it took
// (first touch of memory the table grows into).
void report(const char* what, double seconds, size_t count) {
    const long faults = minorFaults();
    std::printf("  %-34s %9.1f ms  %9.0f ns/op  %7ld page faults\n", what, seconds * 1e3,
                seconds * 1e9 / static_cast<double>(count), faults - g_faults);
    g_faults = faults;
}

// `interfaceQuery`: the locality of every advertising host is asked of the machine's
// interfaces (one getifaddrs per add); otherwise the board's addresses are a fixed
// list, which isolates the cost of the table itself.
void run(size_t count, bool reportMemory, bool interfaceQuery) {
    if (interfaceQuery) {
        SystemDefaultCfg::getInstance()->resetLocalIpAddrs();
    } else {
        IpAddress own;
        own.fromString("192.168.100.1");
        SystemDefaultCfg::getInstance()->setLocalIpAddrs({own});
    }
    const long rssStart = peakRssKiB();
    std::vector<std::string> texts;
    std::vector<std::string> updates;
    std::vector<std::string> urls;
    texts.reserve(count);
    updates.reserve(count);
    urls.reserve(count);
    size_t sdpBytes = 0;
    for (size_t i = 0; i < count; ++i) {
        const Aes67Sdp sdp = advertisement(i, 1);
        texts.push_back(sdp.text());
        updates.push_back(advertisement(i, 2).text());
        urls.push_back("rtsp://" + sdp.source + ":554/by-name/" + std::to_string(i));
        sdpBytes += texts.back().size();
    }
    const long rssTexts = peakRssKiB();

    std::printf("%zu advertisements, %zu SDP bytes (%.0f bytes each), host locality from %s\n", count,
                sdpBytes, static_cast<double>(sdpBytes) / static_cast<double>(count),
                interfaceQuery ? "the interfaces (getifaddrs)" : "a fixed address list");

    // What every add pays for the parse alone.
    g_faults = minorFaults();
    auto start = Clock::now();
    for (size_t i = 0; i < count; ++i) {
        SdpConverter converter;
        SdpSession session;
        if (converter.parseSdp(texts[i]) != 0 || converter.getSdpConfig(session) != 0) {
            fail("parse", i);
        }
    }
    const double parse = secondsSince(start);
    report("SDP parse only", parse, count);

    AdvSessions table;
    session_id_t id = 0;
    bool updated = false;
    start = Clock::now();
    for (size_t i = 0; i < count; ++i) {
        if (table.addAdvertisedSession(urls[i], texts[i], id, updated) != 0 || updated) {
            fail("add", i);
        }
    }
    const double add = secondsSince(start);
    report("add (new entries)", add, count);
    const long rssTable = peakRssKiB();

    start = Clock::now();
    for (size_t i = 0; i < count; ++i) {
        if (table.addAdvertisedSession(urls[i], updates[i], id, updated) != 0 || !updated) {
            fail("update", i);
        }
    }
    const double update = secondsSince(start);
    report("add (updates)", update, count);

    AdvertisementState state;
    start = Clock::now();
    for (size_t i = 0; i < count; ++i) {
        if (table.getSessionStatus(idOf(i), state) != 0) {
            fail("status", i);
        }
    }
    report("getSessionStatus", secondsSince(start), count);

    start = Clock::now();
    for (size_t i = 0; i < count; ++i) {
        SdpSession session;
        if (table.getSdpSession(idOf(i), session) != 0) {
            fail("getSdpSession", i);
        }
    }
    report("getSdpSession (copy)", secondsSince(start), count);

    const size_t byName = 1000;
    start = Clock::now();
    for (size_t i = 0; i < byName; ++i) {
        if (table.removeAdvertisedSessionByName("Stage box " + std::to_string(i * (count / byName))) == 0) {
            fail("remove by name", i);
        }
    }
    report("removeAdvertisedSessionByName", secondsSince(start), byName);

    start = Clock::now();
    size_t removed = 0;
    for (size_t i = 0; i < count; ++i) {
        removed += table.removeAdvertisedSession(idOf(i)) != 0 ? 1 : 0;
    }
    report("removeAdvertisedSession (id)", secondsSince(start), count);
    if (removed != count - byName || table.size() != 0) {
        fail("remove by id", removed);
    }

    std::printf("  table time / parse time: add %.2f, update %.2f\n", add / parse, update / parse);
    if (reportMemory) {
        std::printf("  peak RSS %ld KiB: texts %+ld KiB, table %+ld KiB = %.1f x SDP bytes\n", rssTable,
                    rssTexts - rssStart, rssTable - rssTexts,
                    static_cast<double>(rssTable - rssTexts) * 1024.0 / static_cast<double>(sdpBytes));
    }
}

}  // namespace

int main(int argc, char** argv) {
    Logger::getInstance()->setThreshold(3);
    const size_t count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 50000;
    // The big run comes first so that its peak memory is measured from a clean start.
    run(count, true, false);
    run(count / 10, false, false);
    run(count / 10, false, true);
    return 0;
}
