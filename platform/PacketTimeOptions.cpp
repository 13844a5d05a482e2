#include "pimAvMngApi/platform/PacketTimeOptions.h"

int PacketTimeOptions::toSamplesPerPacketEnum(unsigned int count, samplesPerPkt_e& out) {
    switch (count) {
        case SAMPLES_PER_PKT_6:
        case SAMPLES_PER_PKT_12:
        case SAMPLES_PER_PKT_16:
        case SAMPLES_PER_PKT_24:
        case SAMPLES_PER_PKT_32:
        case SAMPLES_PER_PKT_48:
        case SAMPLES_PER_PKT_96:
        case SAMPLES_PER_PKT_192:
        case SAMPLES_PER_PKT_384:
            out = static_cast<samplesPerPkt_e>(count);
            return 0;
        default:
            out = SAMPLES_PER_PKT_UNSUPPORTED;
            return -8;
    }
}
