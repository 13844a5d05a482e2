#pragma once

#include <string>
#include <vector>

/// The grouping line of one SDP text ("a=group:DUP ..." for SMPTE ST 2022-7 duplicate
/// streams, "a=group:MULTI-2SI ..." / "a=group:MULTI-SD ..." for multi-stream video),
/// held only while that text is parsed. The items are the media identifications in the
/// order written; media sections are matched to them by position.
class SdpGroup {
public:
    /// The grouping semantics, by code.
    enum Type : int {
        GROUP_NONE = 0,
        GROUP_DUP = 1,
        GROUP_MULTI_2SI = 2,
        GROUP_MULTI_SD = 3,
    };

    SdpGroup() = default;

    Type m_type = GROUP_NONE;          ///< The grouping semantics of the text.
    std::vector<std::string> m_items;  ///< The media identifications in the order written.
};
