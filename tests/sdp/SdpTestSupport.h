#pragma once

// Shared pieces of the SDP tests: sample texts and a board switch that restores the
// previous board on scope exit.

#include <string>

#include "pimAvMngApi/device/BoardModel.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"

class BoardScope {
public:
    BoardScope(BoardModelType model, BitstreamType::module_t module)
        : m_saved(SystemDefaultCfg::getInstance()->getBoardModel()) {
        SystemDefaultCfg::getInstance()->setBoardModel(BoardModel(model, module));
    }
    ~BoardScope() { SystemDefaultCfg::getInstance()->setBoardModel(m_saved); }
    BoardScope(const BoardScope&) = delete;
    BoardScope& operator=(const BoardScope&) = delete;

private:
    BoardModel m_saved;
};

// A complete AES67 audio description as a device publishes it.
inline std::string aes67Text() {
    return "v=0\n"
           "o=- 123 456 IN IP4 192.168.1.10\n"
           "s=Stage box 1\n"
           "t=0 0\n"
           "m=audio 5004 RTP/AVP 96\n"
           "c=IN IP4 239.69.1.1/32\n"
           "a=rtpmap:96 L24/48000/8\n"
           "a=ptime:1\n"
           "a=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-FF-FE-12-34-56:0\n"
           "a=mediaclk:direct=0\n";
}

// An ST 2110-20 1080i50 video section (raw), without its "m=" line's session.
inline std::string videoSection(const std::string& codec = "raw/90000", const std::string& mid = "") {
    std::string text =
        "m=video 5000 RTP/AVP 96\n"
        "c=IN IP4 239.100.1.1/64\n"
        "a=source-filter: incl IN IP4 239.100.1.1 192.168.1.20\n"
        "a=ts-refclk:ptp=IEEE1588-2008:08-00-11-FF-FE-22-39-E4:127\n"
        "a=mediaclk:direct=0\n"
        "a=rtpmap:96 " + codec + "\n"
        "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; exactframerate=25; depth=10; TCS=SDR; "
        "colorimetry=BT709; PM=2110GPM; SSN=ST2110-20:2017; TP=2110TPN; interlace; \n";
    if (!mid.empty()) {
        text += "a=mid:" + mid + "\n";
    }
    return text;
}

inline std::string sessionHeader(const std::string& extra = "") {
    return "v=0\no=- 1 1 IN IP4 192.168.1.20\ns=video\nt=0 0\n" + extra;
}
