#pragma once

// Umbrella header: every public header of libpimAvMngApi.
// Keep one section per folder, sorted, one line per header.

// platform
#include "pimAvMngApi/platform/ErrorAuxMsg.h"
#include "pimAvMngApi/platform/ErrorReport.h"
#include "pimAvMngApi/platform/IJsonSerializable.h"
#include "pimAvMngApi/platform/IpcMsg.h"
#include "pimAvMngApi/platform/Logger.h"

// model
#include "pimAvMngApi/model/IpAddress.h"

// device

// sdp

// adv

// api
