// Feeds arbitrary text to SdpConverter::parseSdp. An accepted text is checked again,
// written back with the generator (standard and Dante forms), parsed once more and its
// JSON form read back. Every log line is formatted (into a sink that drops it) so that
// the log arguments are exercised too. A crash, a hang, a leak or undefined behaviour
// is a finding; refusals and result codes are not.

#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/sdp/SdpConverter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    pimav::detail::formatAndDropLogLines();

    const std::string text(reinterpret_cast<const char*>(data), size);
    pimav::detail::selectBoard(size > 0 ? data[size - 1] : 0);

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
