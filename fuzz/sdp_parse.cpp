// Feeds arbitrary text to SdpConverter::parseSdp. An accepted text is checked again,
// written back with the generator (standard and Dante forms), parsed once more and its
// JSON form read back. Every log line is formatted (into a sink that drops it) so that
// the log arguments are exercised too. A crash, a hang, a leak or undefined behaviour
// is a finding; refusals and result codes are not.

#include <cstddef>
#include <cstdint>
#include <string>

#include "pimAvMngApi/device/BoardModel.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/Logger.h"
#include "pimAvMngApi/platform/SystemDefaultCfg.h"
#include "pimAvMngApi/sdp/SdpConverter.h"

namespace {

// The boards whose behaviour differs: ST 2022-6 video, channel orders, neither.
const BoardModel& boardFor(uint8_t selector) {
    static const BoardModel boards[] = {
        BoardModel(DAMSON, BitstreamType::MODULE_SDI_TR04),
        BoardModel(MAPLE, BitstreamType::MODULE_SDI_ST2110),
        BoardModel(BIRCH_AES67, BitstreamType::MODULE_NA),
    };
    return boards[selector % 3];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool configured = [] {
        Logger::getInstance()->setThreshold(7);
        Logger::getInstance()->setSink([](int, const std::string&) {});
        return true;
    }();
    (void)configured;

    const std::string text(reinterpret_cast<const char*>(data), size);
    SystemDefaultCfg::getInstance()->setBoardModel(boardFor(size > 0 ? data[size - 1] : 0));

    SdpConverter converter;
    if (converter.parseSdp(text) == 0) {
        SdpSession session;
        converter.getSdpConfig(session);
        converter.checkMinimumCfg(&session);
        session.dump();

        SdpConverter writer;
        writer.setSdpConfig(session);
        std::string generated;
        writer.getSdpString(&generated);
        std::string dante;
        writer.generateDanteSdp(dante);
        SdpConverter reader;
        reader.parseSdp(generated);

        Json::Value json;
        session.Serialize(json);
        SdpSession back;
        back.Deserialize(json);
    }
    ErrorAuxMsg::getInstance()->clear();
    return 0;
}
