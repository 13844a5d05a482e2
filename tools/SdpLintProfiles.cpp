// The profile checks: AES67, SMPTE ST 2110-10/-20/-30, ST 2022-7 and Dante's AES67
// mode. Every check runs; the report keeps the findings of the selected profiles.

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <map>

#include "SdpLint.h"

namespace pimav::detail {

namespace {

// What the profile checks read of one media block.
struct MediaFacts {
    const LintBlock* block = nullptr;
    const LintLine* mline = nullptr;
    std::string_view kind;  // "audio", "video", ...
    LintRtpMap rtpmap;      // of the first format
    std::string_view format;
    const LintLine* ptimeLine = nullptr;
    std::optional<double> ptime;
    const LintLine* connection = nullptr;
    LintConnection address;
};

MediaFacts factsOf(const LintText& text, const LintBlock& block) {
    MediaFacts facts;
    facts.block = &block;
    facts.mline = &text.lines()[block.first];
    const std::vector<std::string_view> fields = splitFields(facts.mline->value);
    facts.kind = fields.empty() ? std::string_view() : fields[0];
    facts.format = fields.size() > 3 ? fields[3] : std::string_view();
    facts.rtpmap = rtpMapOf(text, block, facts.format);
    facts.ptimeLine = text.inherited(block, "ptime");
    if (facts.ptimeLine != nullptr) {
        facts.ptime = decimalNumber(trimSpaces(facts.ptimeLine->attributeValue()));
    }
    facts.connection = text.connection(block);
    if (facts.connection != nullptr) {
        facts.address = readConnection(facts.connection->value);
    }
    return facts;
}

bool near(double value, double wanted) {
    return std::fabs(value - wanted) < 0.0015;
}

bool oneOf(std::optional<double> value, std::initializer_list<double> allowed) {
    return value && std::any_of(allowed.begin(), allowed.end(), [&](double v) { return near(*value, v); });
}

bool oneOf(std::string_view value, std::initializer_list<std::string_view> allowed) {
    return std::find(allowed.begin(), allowed.end(), value) != allowed.end();
}

bool isL16OrL24(const MediaFacts& media) {
    return equalsIgnoreCase(media.rtpmap.encoding, "L16") || equalsIgnoreCase(media.rtpmap.encoding, "L24");
}

std::string ptimeText(const MediaFacts& media) {
    return media.ptimeLine == nullptr ? "no a=ptime"
                                      : std::string(trimSpaces(media.ptimeLine->attributeValue())) + " ms";
}

const LintLine* rtpmapOrMedia(const MediaFacts& media) {
    return media.rtpmap.line != nullptr ? media.rtpmap.line : media.mline;
}

void checkAes67(const LintText& text, const MediaFacts& media, LintReport& report) {
    const LintLine* refclk = text.inherited(*media.block, "ts-refclk");
    if (refclk == nullptr) {
        report.add(LintRule::Aes67RefclkMissing, media.mline);
    } else if (!startsWith(refclk->attributeValue(), "ptp=IEEE1588-2008")) {
        report.add(LintRule::Aes67RefclkNotPtp, refclk, std::string(refclk->attributeValue()));
    }
    if (text.inherited(*media.block, "mediaclk") == nullptr) {
        report.add(LintRule::Aes67MediaclkMissing, media.mline);
    }
    if (media.ptimeLine == nullptr) {
        report.add(LintRule::Aes67PtimeMissing, media.mline);
    } else {
        // At 44.1 kHz a packet holds the samples of the 48 kHz packet times: 48 samples
        // are 1.088 ms.
        const bool samples44k1 = media.rtpmap.rate == 44100 && media.ptime &&
                                 oneOf(*media.ptime * 44.1 / 48.0, {0.125, 0.25, 0.333, 1, 4});
        if (!oneOf(media.ptime, {0.125, 0.25, 0.333, 1, 4}) && !samples44k1) {
            report.add(LintRule::Aes67PtimeValue, media.ptimeLine, ptimeText(media));
        }
    }
    if (!isL16OrL24(media)) {
        report.add(LintRule::Aes67Encoding, rtpmapOrMedia(media), std::string(media.rtpmap.encoding));
    }
    if (media.rtpmap.rate != 44100 && media.rtpmap.rate != 48000 && media.rtpmap.rate != 96000) {
        report.add(LintRule::Aes67SamplingRate, rtpmapOrMedia(media), std::to_string(media.rtpmap.rate));
    }
    if (media.rtpmap.channels > 8) {
        report.add(LintRule::Aes67Channels, rtpmapOrMedia(media), std::to_string(media.rtpmap.channels));
    }
}

void checkSt2110Clock(const LintText& text, const MediaFacts& media, LintReport& report) {
    if (text.inherited(*media.block, "ts-refclk") == nullptr) {
        report.add(LintRule::St2110RefclkMissing, media.mline);
    }
    const LintLine* mediaclk = text.inherited(*media.block, "mediaclk");
    if (mediaclk == nullptr) {
        report.add(LintRule::St2110MediaclkMissing, media.mline);
    } else if (splitFields(mediaclk->attributeValue()).empty() ||
               splitFields(mediaclk->attributeValue())[0] != "direct=0") {
        report.add(LintRule::St2110MediaclkOffset, mediaclk, std::string(mediaclk->attributeValue()));
    }
}

// Channels of the ST 2110-30 channel grouping symbols; 0 for an unknown symbol.
unsigned channelsOfGroup(std::string_view symbol) {
    static const std::map<std::string_view, unsigned> kGroups = {
        {"M", 1}, {"DM", 2}, {"ST", 2}, {"LtRt", 2}, {"51", 6}, {"71", 8}, {"222", 24}, {"SGRP", 4}};
    const auto found = kGroups.find(symbol);
    if (found != kGroups.end()) {
        return found->second;
    }
    return symbol.size() == 3 && symbol[0] == 'U'
               ? static_cast<unsigned>(unsignedNumber(symbol.substr(1)).value_or(0))
               : 0;
}

void checkSt2110_30(const LintText& text, const MediaFacts& media, LintReport& report) {
    if (!isL16OrL24(media)) {
        report.add(LintRule::St2110_30Encoding, rtpmapOrMedia(media), std::string(media.rtpmap.encoding));
    }
    if (media.rtpmap.rate != 48000 && media.rtpmap.rate != 96000) {
        report.add(LintRule::St2110_30SamplingRate, rtpmapOrMedia(media), std::to_string(media.rtpmap.rate));
    }
    if (!oneOf(media.ptime, {1, 0.125})) {
        report.add(LintRule::St2110_30Ptime, media.ptimeLine != nullptr ? media.ptimeLine : media.mline,
                   ptimeText(media));
    } else if (media.rtpmap.channels > (near(*media.ptime, 1) ? 8u : 64u)) {
        report.add(LintRule::St2110_30Channels, rtpmapOrMedia(media),
                   std::to_string(media.rtpmap.channels) + " at " + ptimeText(media));
    }
    const LintLine* fmtp = fmtpOf(text, *media.block, media.format);
    const std::optional<std::string_view> order =
        fmtp == nullptr ? std::nullopt : fmtpParameter(fmtpParameters(*fmtp), "channel-order");
    if (!order || !startsWith(*order, "SMPTE2110.(")) {
        return;
    }
    const std::string_view groups =
        order->substr(11, order->find(')') - std::min(order->find(')'), size_t{11}));
    unsigned total = 0;
    for (const std::string_view symbol : splitFields(groups, ',')) {
        const unsigned channels = channelsOfGroup(trimSpaces(symbol));
        if (channels == 0) {
            return;
        }
        total += channels;
    }
    if (total != media.rtpmap.channels) {
        report.add(LintRule::St2110_30ChannelOrder, fmtp,
                   std::to_string(total) + " vs " + std::to_string(media.rtpmap.channels));
    }
}

bool isDimension(std::string_view value) {
    const std::optional<uint64_t> number = unsignedNumber(value);
    return number && *number >= 1 && *number <= 32767;
}

bool isFrameRate(std::string_view value) {
    const size_t slash = value.find('/');
    return unsignedNumber(value.substr(0, slash)).value_or(0) > 0 &&
           (slash == std::string_view::npos || unsignedNumber(value.substr(slash + 1)).value_or(0) > 0);
}

void checkSt2110_20(const LintText& text, const MediaFacts& media, LintReport& report) {
    if (media.rtpmap.encoding != "raw" || media.rtpmap.rate != 90000) {
        report.add(LintRule::St2110_20Encoding, rtpmapOrMedia(media),
                   std::string(media.rtpmap.encoding) + "/" + std::to_string(media.rtpmap.rate));
    }
    const LintLine* fmtp = fmtpOf(text, *media.block, media.format);
    if (fmtp == nullptr) {
        report.add(
            LintRule::St2110_20FmtpMissing, media.mline,
            text.attribute(*media.block, "framerate") != nullptr ? "a=framerate: is no format line" : "");
        return;
    }
    const std::string_view parameters = fmtpParameters(*fmtp);
    using Valid = bool (*)(std::string_view);
    static const struct {
        std::string_view key;
        Valid valid;
    } kRequired[] = {
        {"sampling",
         [](std::string_view v) {
             return oneOf(
                 v, {"YCbCr-4:4:4", "YCbCr-4:2:2", "YCbCr-4:2:0", "CLYCbCr-4:4:4", "CLYCbCr-4:2:2",
                     "CLYCbCr-4:2:0", "ICtCp-4:4:4", "ICtCp-4:2:2", "ICtCp-4:2:0", "RGB", "XYZ", "KEY"});
         }},
        {"depth",
         [](std::string_view v) {
             return oneOf(v, {"8", "10", "12", "16", "16f"});
         }},
        {"width", isDimension},
        {"height", isDimension},
        {"exactframerate", isFrameRate},
        {"colorimetry",
         [](std::string_view v) {
             return oneOf(v, {"BT601", "BT709", "BT2020", "BT2100", "ST2065-1", "ST2065-3", "UNSPECIFIED",
                              "XYZ", "ALPHA"});
         }},
        {"PM",
         [](std::string_view v) {
             return oneOf(v, {"2110GPM", "2110BPM"});
         }},
        {"SSN",
         [](std::string_view v) {
             return oneOf(v, {"ST2110-20:2017", "ST2110-20:2022"});
         }},
    };
    for (const auto& required : kRequired) {
        const std::optional<std::string_view> value = fmtpParameter(parameters, required.key);
        if (!value) {
            report.add(LintRule::St2110_20ParameterMissing, fmtp, std::string(required.key));
        } else if (!required.valid(*value)) {
            report.add(LintRule::St2110_20ParameterValue, fmtp,
                       std::string(required.key) + "=" + std::string(*value));
        }
    }
    const std::optional<std::string_view> tp = fmtpParameter(parameters, "TP");
    if (!tp || !oneOf(*tp, {"2110TPN", "2110TPNL", "2110TPW"})) {
        report.add(LintRule::St2110_21SenderType, fmtp, tp ? "TP=" + std::string(*tp) : "");
    }
}

void checkDante(const LintText& text, const MediaFacts& media, LintReport& report) {
    if (media.rtpmap.rate != 48000) {
        report.add(LintRule::DanteSamplingRate, rtpmapOrMedia(media), std::to_string(media.rtpmap.rate));
    }
    if (!isL16OrL24(media)) {
        report.add(LintRule::DanteEncoding, rtpmapOrMedia(media), std::string(media.rtpmap.encoding));
    }
    if (media.rtpmap.channels > 8) {
        report.add(LintRule::DanteChannels, rtpmapOrMedia(media), std::to_string(media.rtpmap.channels));
    }
    if (!media.address.address.ipv4 || !media.address.address.multicast) {
        report.add(LintRule::DanteMulticast, media.connection != nullptr ? media.connection : media.mline,
                   std::string(media.address.address.address));
    }
    const LintLine* keywords = text.attribute(text.session(), "keywds");
    const bool fromDante =
        keywords != nullptr && keywords->attributeValue().find("Dante") != std::string_view::npos;
    const LintLine* at = media.ptimeLine != nullptr ? media.ptimeLine : media.mline;
    if (fromDante && !oneOf(media.ptime, {1})) {
        report.add(LintRule::DanteSendPtime, at, ptimeText(media));
    } else if (!fromDante && !oneOf(media.ptime, {0.125, 0.25, 0.333, 1})) {
        report.add(LintRule::DanteReceivePtime, at, ptimeText(media));
    }
}

// The DUP group and its two legs.
void checkDuplicates(const LintText& text, const std::vector<MediaFacts>& media, LintReport& report) {
    const LintLine* group = nullptr;
    for (const LintLine* line : text.attributes(text.session(), "group")) {
        if (startsWith(line->attributeValue(), "DUP")) {
            group = line;
            break;
        }
    }
    if (group == nullptr) {
        report.add(LintRule::St2022_7GroupMissing, media.empty() ? size_t{1} : media.front().mline->number);
        return;
    }
    const std::vector<std::string_view> fields = splitFields(group->attributeValue());
    const std::vector<std::string_view> tags(fields.begin() + 1, fields.end());
    std::vector<const MediaFacts*> legs;
    for (const MediaFacts& facts : media) {
        const LintLine* mid = text.attribute(*facts.block, "mid");
        if (mid == nullptr || std::find(tags.begin(), tags.end(), mid->attributeValue()) == tags.end()) {
            report.add(LintRule::St2022_7MidMismatch, mid != nullptr ? mid : facts.mline,
                       mid != nullptr ? std::string(mid->attributeValue()) : "no a=mid:");
        } else {
            legs.push_back(&facts);
        }
    }
    if (tags.size() != 2 || legs.size() != 2) {
        report.add(LintRule::St2022_7Legs, group,
                   std::to_string(tags.size()) + " tags, " + std::to_string(legs.size()) +
                       " legs with their a=mid:");
        return;
    }
    const MediaFacts& first = *legs[0];
    const MediaFacts& second = *legs[1];
    const LintLine* secondFilter = text.inherited(*second.block, "source-filter");
    if (first.address.valid && second.address.valid &&
        first.address.address.address == second.address.address.address) {
        report.add(LintRule::St2022_7SameAddress,
                   second.connection != nullptr ? second.connection : secondFilter,
                   std::string(first.address.address.address));
    }
    std::string differences;
    const auto differ = [&](bool different, const char* what) {
        if (different) {
            differences += differences.empty() ? what : std::string(", ") + what;
        }
    };
    differ(!equalsIgnoreCase(first.rtpmap.encoding, second.rtpmap.encoding) ||
               first.rtpmap.rate != second.rtpmap.rate,
           "rtpmap");
    differ(first.ptime.value_or(-1) != second.ptime.value_or(-1), "ptime");
    differ(first.rtpmap.channels != second.rtpmap.channels, "channels");
    if (!differences.empty()) {
        report.add(LintRule::St2022_7LegMismatch, second.mline, differences);
    }
}

}  // namespace

void lintProfiles(const LintText& text, LintReport& report) {
    std::vector<MediaFacts> media;
    for (const LintBlock& block : text.media()) {
        media.push_back(factsOf(text, block));
    }
    for (const MediaFacts& facts : media) {
        if (facts.kind == "audio") {
            checkAes67(text, facts, report);
            checkSt2110Clock(text, facts, report);
            checkSt2110_30(text, facts, report);
            checkDante(text, facts, report);
        } else if (facts.kind == "video") {
            checkSt2110Clock(text, facts, report);
            checkSt2110_20(text, facts, report);
        }
    }
    checkDuplicates(text, media, report);
}

}  // namespace pimav::detail
