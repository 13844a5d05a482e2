#pragma once

#include <list>

#include "pimAvMngApi/model/SdiOffset.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"

/// The offsets of several SDI ports. JSON form: a bare array of SdiOffset objects (the
/// document itself is the array). An empty list turns a null document into [].
///
/// Reading appends: each element is read into a fresh SdiOffset (0, 0, 0) and appended;
/// the list is not emptied first.
class SdiOffsetList : public IJsonSerializable {
public:
    SdiOffsetList() = default;
    ~SdiOffsetList() override = default;

    void Serialize(Json::Value& out) const override;
    void Deserialize(Json::Value& in) override;

    std::list<SdiOffset> m_offsets;  ///< The offsets, in array order.
};
