#pragma once

/// Sample counts per RTP packet that audio streams use (AES67, SMPTE ST 2110-30).
///
/// The enumeration value of a supported count is the count itself, so a stored value
/// can be written to JSON and read back as a number. At 48 kHz the counts correspond to
/// packet times of 125 us (6), 250 us (12), 333 us (16), 500 us (24), 666 us (32),
/// 1 ms (48), 2 ms (96), 4 ms (192); 384 is 4 ms at 96 kHz.
class PacketTimeOptions {
public:
    /// The supported counts; each value is the count.
    enum samplesPerPkt_e {
        SAMPLES_PER_PKT_UNSUPPORTED = 0,
        SAMPLES_PER_PKT_6 = 6,
        SAMPLES_PER_PKT_12 = 12,
        SAMPLES_PER_PKT_16 = 16,
        SAMPLES_PER_PKT_24 = 24,
        SAMPLES_PER_PKT_32 = 32,
        SAMPLES_PER_PKT_48 = 48,
        SAMPLES_PER_PKT_96 = 96,
        SAMPLES_PER_PKT_192 = 192,
        SAMPLES_PER_PKT_384 = 384,
    };

    /// A supported count sets `out` to its value and returns 0. Any other count
    /// (0 included) sets `out` to SAMPLES_PER_PKT_UNSUPPORTED and returns -8.
    static int toSamplesPerPacketEnum(unsigned int count, samplesPerPkt_e& out);
};
