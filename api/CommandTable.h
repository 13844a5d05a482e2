#pragma once

// The command table of api/CommandTable.def as data for code that looks commands up at
// run time (avmngctl), and the checks that hold the table to the public enum.

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "pimAvMngApi/api/Aes67Commands.h"

namespace pimav::detail {

// How a command's pass-through method takes its documents (see api/CommandTable.def).
enum class CommandShape { REQUEST, REPLY, GAIN, NONE };
// Whether a command changes the device's state (see api/CommandTable.def).
enum class CommandAccess { READ, WRITE };

struct CommandRow {
    aes67_command_id_t id;
    const char* enumName;  // "AES67_GET_SESSION_SDP"
    const char* method;    // "getSessionSdp"; for NONE the emulator's handler
    CommandShape shape;
    CommandAccess access;
};

inline constexpr CommandRow kCommandRows[] = {
#define PIMAV_COMMAND(id, name, method, shape, access, text) \
    {name, #name, #method, CommandShape::shape, CommandAccess::access},
#include "api/CommandTable.def"
#undef PIMAV_COMMAND
};

// Each row's id is its enumerator's value, the rows are in id order, and there is one
// row per id, so that kCommandRows[id] (and every table generated from the rows) is the
// row of command `id`.
#define PIMAV_COMMAND(id, name, method, shape, access, text) static_assert(name == id, #name " is not " #id);
#include "api/CommandTable.def"
#undef PIMAV_COMMAND

static_assert(std::size(kCommandRows) == Aes67Commands::kCommandCount, "one row per command id");

constexpr bool commandRowsInIdOrder() {
    for (size_t i = 0; i < std::size(kCommandRows); ++i) {
        if (kCommandRows[i].id != i) {
            return false;
        }
    }
    return true;
}
static_assert(commandRowsInIdOrder(), "the rows of api/CommandTable.def are in id order");

// Whether command `id` changes the device's state (false for an unknown id).
constexpr bool commandChangesState(uint32_t id) {
    return id < std::size(kCommandRows) && kCommandRows[id].access == CommandAccess::WRITE;
}

}  // namespace pimav::detail
