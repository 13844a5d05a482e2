#pragma once

#include <cstdint>
#include <string>

/// The boards of the device family. The text of a value is its name as written here;
/// any other value has the text "Undefined". "ALDER" is read as a second name of DAMSON.
enum BoardModelType : int32_t {
    BIRCH_AES67 = 0,
    CEDAR_AES67 = 1,
    BIRCH_AVB = 2,
    DAMSON = 3,
    BIRCH_ELM = 4,
    BIRCH_FIR = 5,
    GORSE_AOIP = 6,
    BIRCH_HAZEL_IO = 7,
    IVY_AES67 = 8,
    JUNIPER = 9,
    KAPOK = 10,
    MAPLE = 11,
    LARCH_MADI = 12,
    LARCH_AES1616 = 13,
    LARCH_ANA88 = 14,
    JUNIPER_QH = 15,
};

/// The text of a model ("LARCH_MADI"), "Undefined" for a value outside the table.
std::string boardModelTypeToString(BoardModelType model);

/// Exact, case-sensitive lookup of a model name or "ALDER". Returns false and leaves
/// `model` unchanged when the text names no model.
bool boardModelTypeFromString(const std::string& text, BoardModelType& model);
