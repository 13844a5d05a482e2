#pragma once

#include <vector>

#include "pimAvMngApi/device/BitstreamType.h"
#include "pimAvMngApi/device/BoardModelType.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"
#include "pimAvMngApi/platform/VideoFormat.h"

/// One board: its model, the fitted video module and the video formats that follow
/// from the two.
///
/// Supported formats, in this order (codes of VideoFormat::video_format_t):
///  - DAMSON, JUNIPER, MAPLE, JUNIPER_QH: 1, 2, 10, 4, 5, 11, 8, 9, 3, 21, 6, 7, 14, 15,
///    16, 17 (sixteen HD formats);
///  - MAPLE then adds 25, 28, 24, 27, 29, 26 (2160p);
///  - JUNIPER and JUNIPER_QH with an HDMI-ST2110 module add 25, 28, 24, 27;
///  - every other model supports none.
///
/// JSON form: {"model": text of the model, "module": text of the module}; the format
/// list is not written. Reading sets the module first, then the model through setModel
/// when the "model" text names one (exact case, "ALDER" for DAMSON); an unknown model
/// text changes neither the model nor the list.
class BoardModel : public IJsonSerializable {
public:
    BoardModel() = default;
    /// Model and module together, with the format list built for them.
    BoardModel(BoardModelType model, BitstreamType::module_t module);
    ~BoardModel() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    /// Sets the model, rebuilds the format list and logs the change at level 5.
    void setModel(BoardModelType model);
    /// Rebuilds the format list from the model and the module. Returns 0.
    int initializeSupportedVideoFormatList();

    /// The board model.
    BoardModelType getModel() const { return m_model; }
    /// The text of the board model ("Undefined" outside the table).
    std::string getModelString() const { return boardModelTypeToString(m_model); }
    /// The fitted video module as a record.
    const BitstreamType& getBitstream() const { return m_bitstream; }
    /// The fitted video module.
    BitstreamType::module_t getModule() const { return m_bitstream.getModule(); }
    /// Sets the module and rebuilds the format list (no log line).
    void setModule(BitstreamType::module_t module);

    /// The supported video formats, in the order given above.
    const std::vector<VideoFormat>& getSupportedVideoFormats() const { return m_supported_video_formats; }
    /// True when `format` is in the supported list.
    bool isVideoFormatSupported(VideoFormat::video_format_t format) const;

    BoardModelType m_model = BIRCH_AES67;  ///< The board model ("model").
    BitstreamType m_bitstream;             ///< The fitted video module ("module").
    /// The formats that the model and module support; not written to JSON.
    std::vector<VideoFormat> m_supported_video_formats;
};
