// Throughput of SdpConverter::parseSdp + getSdpConfig on a typical AES67 audio text and
// on a two-stream SMPTE ST 2022-7 (DUP) text, with the logger at its default threshold
// (lines that pass it go to a sink that drops them, so terminal output is not timed).
// When GStreamer's SDP library is present, its generic parser runs on the same texts.

#include <benchmark/benchmark.h>

#include <string>

#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/sdp/SdpConverter.h"

#ifdef PIMAV_HAVE_GSTSDP
#include <gst/sdp/sdp.h>
#endif

namespace {

const std::string kAes67 =
    "v=0\n"
    "o=- 1311738121 1311738121 IN IP4 192.168.1.10\n"
    "s=Stage box 1 : 8\n"
    "t=0 0\n"
    "m=audio 5004 RTP/AVP 96\n"
    "c=IN IP4 239.69.1.1/32\n"
    "a=clock-domain:PTPv2 0\n"
    "a=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:0\n"
    "a=mediaclk:direct=0\n"
    "a=source-filter: incl IN IP4 239.69.1.1 192.168.1.10\n"
    "a=rtpmap:96 L24/48000/8\n"
    "a=framecount:48\n"
    "a=ptime:1\n";

const std::string kDup =
    "v=0\n"
    "o=- 1 3857219969 IN IP4 192.168.60.66\n"
    "s=ST2110-30A\n"
    "t=0 0\n"
    "a=group:DUP primary secondary\n"
    "m=audio 50060 RTP/AVP 97\n"
    "c=IN IP4 239.61.1.1/32\n"
    "a=clock-domain:PTPv2 42\n"
    "a=ts-refclk:ptp=IEEE1588-2008:08-00-11-FF-FE-21-A5-45:42\n"
    "a=mediaclk:direct=0\n"
    "a=source-filter: incl IN IP4 239.61.1.1 192.168.60.66\n"
    "a=rtpmap:97 L24/48000/8\n"
    "a=framecount:48\n"
    "a=ptime:1\n"
    "a=mid:primary\n"
    "m=audio 50160 RTP/AVP 97\n"
    "c=IN IP4 239.161.1.1/32\n"
    "a=clock-domain:PTPv2 42\n"
    "a=ts-refclk:ptp=IEEE1588-2008:08-00-11-FF-FE-21-A5-45:42\n"
    "a=mediaclk:direct=0\n"
    "a=source-filter: incl IN IP4 239.161.1.1 192.168.60.70\n"
    "a=rtpmap:97 L24/48000/8\n"
    "a=framecount:48\n"
    "a=ptime:1\n"
    "a=mid:secondary\n";

void quietLogger() {
    Logger::getInstance()->setThreshold(Logger::kDefaultThreshold);
    Logger::getInstance()->setSink([](int, const std::string&) {});
}

void parseOurs(benchmark::State& state, const std::string& text) {
    quietLogger();
    SdpConverter converter;
    SdpSession session;
    for (auto _ : state) {
        if (converter.parseSdp(text) != 0) {
            state.SkipWithError("parse failed");
            break;
        }
        converter.getSdpConfig(session);
        benchmark::DoNotOptimize(session.m_media.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
    Logger::getInstance()->setSink({});
}

void BM_SdpConverter_Aes67(benchmark::State& state) { parseOurs(state, kAes67); }
void BM_SdpConverter_Dup(benchmark::State& state) { parseOurs(state, kDup); }
BENCHMARK(BM_SdpConverter_Aes67);
BENCHMARK(BM_SdpConverter_Dup);

#ifdef PIMAV_HAVE_GSTSDP
void parseGst(benchmark::State& state, const std::string& text) {
    const guint8* data = reinterpret_cast<const guint8*>(text.data());
    for (auto _ : state) {
        GstSDPMessage* message = nullptr;
        gst_sdp_message_new(&message);
        if (gst_sdp_message_parse_buffer(data, static_cast<guint>(text.size()), message) != GST_SDP_OK ||
            gst_sdp_message_medias_len(message) == 0) {
            state.SkipWithError("gst parse failed");
            gst_sdp_message_free(message);
            break;
        }
        benchmark::DoNotOptimize(message);
        gst_sdp_message_free(message);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_GstSdp_Aes67(benchmark::State& state) { parseGst(state, kAes67); }
void BM_GstSdp_Dup(benchmark::State& state) { parseGst(state, kDup); }
BENCHMARK(BM_GstSdp_Aes67);
BENCHMARK(BM_GstSdp_Dup);
#endif

}  // namespace

BENCHMARK_MAIN();
